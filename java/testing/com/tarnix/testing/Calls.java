package com.tarnix.testing;

import java.util.ArrayList;
import java.util.List;

/**
 * What arrived at the stand-ins, one line per call, such as
 * {@code onDataCollected(DesktopConnection{...}, BaseSample{...})}.
 */
public final class Calls {
  private static final List<String> CALLS = new ArrayList<>();

  private Calls() {}

  public static void record(String method, Object... arguments) {
    StringBuilder line = new StringBuilder(method).append('(');
    for (int i = 0; i < arguments.length; i++) {
      if (i > 0) line.append(", ");
      line.append(Text.of(arguments[i]));
    }
    line.append(')');
    synchronized (CALLS) {
      CALLS.add(line.toString());
    }
  }

  public static int count() {
    synchronized (CALLS) {
      return CALLS.size();
    }
  }

  /** The call at index (from 0), or null. */
  public static String get(int index) {
    synchronized (CALLS) {
      return index >= 0 && index < CALLS.size() ? CALLS.get(index) : null;
    }
  }

  /** Every call, one per line. */
  public static String all() {
    synchronized (CALLS) {
      return String.join("\n", CALLS);
    }
  }

  public static void clear() {
    synchronized (CALLS) {
      CALLS.clear();
    }
  }
}
