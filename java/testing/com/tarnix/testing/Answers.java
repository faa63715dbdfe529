package com.tarnix.testing;

import java.util.HashMap;
import java.util.Map;

/** What the message client answers, per method name; null unless told otherwise. */
public final class Answers {
  private static final Map<String, String> ANSWERS = new HashMap<>();

  private Answers() {}

  public static synchronized void set(String method, String text) {
    ANSWERS.put(method, text);
  }

  public static synchronized String get(String method) {
    return ANSWERS.get(method);
  }

  public static synchronized void clear() {
    ANSWERS.clear();
  }
}
