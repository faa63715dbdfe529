package com.tarnix.testing;

import java.lang.reflect.Constructor;
import java.util.HashMap;
import java.util.Map;

/**
 * Switches that make a stand-in throw. Each stand-in constructor and method calls
 * {@link #hit(String)} with its place, such as "BaseMetric.putLongValue" or
 * "BaseSample.&lt;init&gt;" (every constructor of the class).
 */
public final class Faults {
  private static final class Fault {
    final String exceptionClass;
    final String message;
    final int onHit; // 0: every hit
    int hits;

    Fault(String exceptionClass, String message, int onHit) {
      this.exceptionClass = exceptionClass;
      this.message = message;
      this.onHit = onHit;
    }
  }

  private static final Map<String, Fault> FAULTS = new HashMap<>();

  private Faults() {}

  /** Every hit of the place throws a new exceptionClass(message). */
  public static synchronized void throwIn(String where, String exceptionClass, String message) {
    FAULTS.put(where, new Fault(exceptionClass, message, 0));
  }

  /** Only the nth hit (from 1) of the place throws. */
  public static synchronized void throwOnHit(
      String where, int nth, String exceptionClass, String message) {
    FAULTS.put(where, new Fault(exceptionClass, message, nth));
  }

  public static synchronized void clear() {
    FAULTS.clear();
  }

  public static void hit(String where) {
    Throwable failure = failureFor(where);
    if (failure != null) Faults.<RuntimeException>sneakyThrow(failure);
  }

  private static synchronized Throwable failureFor(String where) {
    Fault fault = FAULTS.get(where);
    if (fault == null) return null;
    fault.hits++;
    if (fault.onHit != 0 && fault.onHit != fault.hits) return null;
    return make(fault.exceptionClass, fault.message);
  }

  /** The exception to throw; a class that cannot be made gives an IllegalStateException. */
  static Throwable make(String exceptionClass, String message) {
    try {
      Class<?> type = Class.forName(exceptionClass);
      if (message == null) return (Throwable) type.getConstructor().newInstance();
      Constructor<?> withMessage = type.getConstructor(String.class);
      return (Throwable) withMessage.newInstance(message);
    } catch (ReflectiveOperationException | ClassCastException e) {
      return new IllegalStateException("cannot make " + exceptionClass + ": " + e);
    }
  }

  // Lets checked exceptions (java.rmi.ConnectException) out of methods that declare none,
  // as the real classes' failures arrive at the native caller.
  @SuppressWarnings("unchecked")
  private static <T extends Throwable> void sneakyThrow(Throwable t) throws T {
    throw (T) t;
  }
}
