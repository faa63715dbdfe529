package com.tarnix.testing;

import java.util.Iterator;
import java.util.Map;

/** The readable form of the values the stand-ins receive. */
public final class Text {
  /** Implemented by every data-model stand-in. */
  public interface Describable {
    String describe();
  }

  private Text() {}

  public static String of(Object value) {
    if (value == null) return "null";
    if (value instanceof String) return '"' + (String) value + '"';
    if (value instanceof Describable) return ((Describable) value).describe();
    if (value instanceof Map) return ofMap((Map<?, ?>) value);
    if (value instanceof Iterable) return ofList((Iterable<?>) value);
    return String.valueOf(value);
  }

  public static String ofList(Iterable<?> values) {
    StringBuilder text = new StringBuilder("[");
    for (Iterator<?> it = values.iterator(); it.hasNext(); ) {
      text.append(of(it.next()));
      if (it.hasNext()) text.append(", ");
    }
    return text.append(']').toString();
  }

  /** Entries in key order when the keys can be ordered, so that the text is stable. */
  public static String ofMap(Map<?, ?> values) {
    try {
      values = new java.util.TreeMap<Object, Object>(values);
    } catch (ClassCastException | NullPointerException unordered) {
      // as the map gives them
    }
    StringBuilder text = new StringBuilder("{");
    for (Iterator<? extends Map.Entry<?, ?>> it = values.entrySet().iterator(); it.hasNext(); ) {
      Map.Entry<?, ?> entry = it.next();
      text.append(of(entry.getKey())).append('=').append(of(entry.getValue()));
      if (it.hasNext()) text.append(", ");
    }
    return text.append('}').toString();
  }

  /** The native side's rendering of a throwable: toString(), then "\r\n\t" and each frame. */
  public static String throwableText(Throwable t) {
    String first = t.toString();
    StringBuilder text = new StringBuilder(first == null ? "" : first);
    for (StackTraceElement frame : t.getStackTrace()) text.append("\r\n\t").append(frame);
    return text.toString();
  }
}
