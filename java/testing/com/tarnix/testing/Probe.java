package com.tarnix.testing;

/**
 * A class for exercising the native bridge itself: arguments of every kind, answers of
 * every kind, and exceptions of every shape.
 */
public class Probe implements Text.Describable {
  private final String made;

  public Probe() {
    this.made = "Probe()";
  }

  public Probe(long time) {
    this.made = "Probe(" + time + ")";
  }

  public Probe(int id, String name, boolean flag) {
    this.made = "Probe(" + id + ", " + Text.of(name) + ", " + flag + ")";
  }

  public String describe() {
    return made;
  }

  public String kinds(int i, long j, double d, boolean z, String s) {
    return i + "|" + j + "|" + d + "|" + z + "|" + Text.of(s);
  }

  /** Does nothing: the cost of a call and nothing else. */
  public void touch(long j) {}

  public String wideLong(long j) {
    return Long.toString(j);
  }

  public String wideDouble(double d) {
    return Double.toString(d);
  }

  public String echo(String s) {
    return s;
  }

  public int length(String s) {
    return s == null ? -1 : s.length();
  }

  public String answerNull() {
    return null;
  }

  public Object answerObject() {
    return new StringBuilder("an object");
  }

  public int answerInt() {
    return 42;
  }

  public void record(String what) {
    Calls.record("Probe.record", what);
  }

  public String describeOther(Text.Describable other) {
    return other == null ? "null" : other.describe();
  }

  /** Throws from a few frames down, so that the stack has frames to print. */
  public void throwWithFrames(String message) {
    level1(message);
  }

  private void level1(String message) {
    level2(message);
  }

  private void level2(String message) {
    throw new IllegalStateException(message);
  }

  public void throwWithoutStack(String message) {
    IllegalStateException e = new IllegalStateException(message);
    e.setStackTrace(new StackTraceElement[0]);
    throw e;
  }

  public void throwNullText() {
    throw new NullTextException();
  }

  public void throwNamed(String exceptionClass, String message) {
    Faults.hit("Probe.throwNamed");
    Throwable t = Faults.make(exceptionClass, message);
    Probe.<RuntimeException>sneakyThrow(t);
  }

  /** An exception whose toString() answers null. */
  public static final class NullTextException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    @Override
    public String toString() {
      return null;
    }
  }

  /** An exception whose toString() itself throws. */
  public static final class BrokenTextException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    @Override
    public String toString() {
      throw new IllegalStateException("no text");
    }
  }

  public void throwBrokenText() {
    throw new BrokenTextException();
  }

  @SuppressWarnings("unchecked")
  private static <T extends Throwable> void sneakyThrow(Throwable t) throws T {
    throw (T) t;
  }
}
