package com.tarnix.messageserver;

import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;

/**
 * Keeps one line per call, such as {@code onDesktopPoll(DesktopConnection{...}, 7, "")},
 * and answers the text set for the method (null unless told otherwise), after the delay
 * set (a slow server).
 */
final class RecordingMessageServer implements MessageServer {
  private final List<String> received = new ArrayList<>();
  private final Map<String, String> answers = new HashMap<>();
  private volatile long delayMillis;

  synchronized void setAnswer(String method, String text) {
    if (text == null) answers.remove(method);
    else answers.put(method, text);
  }

  void setDelay(long millis) {
    if (millis < 0) throw new IllegalArgumentException("negative delay");
    delayMillis = millis;
  }

  synchronized void clear() {
    received.clear();
  }

  @Override
  public synchronized List<String> received() {
    return new ArrayList<>(received);
  }

  @Override
  public String onStartup(String description, String connection) {
    return record("onStartup", quoted(description), connection);
  }

  @Override
  public String onUserLogon(String connection, String desktop, long time, String session) {
    return record("onUserLogon", connection, desktop, Long.toString(time), session);
  }

  @Override
  public void onUserLogoff(String connection, long time, String session) {
    record("onUserLogoff", connection, Long.toString(time), session);
  }

  @Override
  public void onUserDisconnect(String connection, long time, String session) {
    record("onUserDisconnect", connection, Long.toString(time), session);
  }

  @Override
  public void onUserReconnect(String connection, long time, String session) {
    record("onUserReconnect", connection, Long.toString(time), session);
  }

  @Override
  public void refreshSession(String connection, long time, String desktop, String session) {
    record("refreshSession", connection, Long.toString(time), desktop, session);
  }

  @Override
  public String onDataCollected(String connection, String sample) {
    return record("onDataCollected", connection, sample);
  }

  @Override
  public String onExtendedDataCollected(String connection, String metrics, String sample) {
    return record("onExtendedDataCollected", connection, metrics, sample);
  }

  @Override
  public String onDesktopPoll(String connection, long time, String text) {
    return record("onDesktopPoll", connection, Long.toString(time), quoted(text));
  }

  @Override
  public String onActionPerformed(String connection, String metadata, String route) {
    return record("onActionPerformed", connection, metadata, quoted(route));
  }

  // The call is received at once and answered after the delay, so that the server can be
  // asked what arrived while it keeps a caller waiting.
  private String record(String method, String... arguments) {
    String answer;
    synchronized (this) {
      received.add(method + '(' + String.join(", ", arguments) + ')');
      answer = answers.get(method);
    }
    long delay = delayMillis;
    if (delay > 0) {
      try {
        Thread.sleep(delay);
      } catch (InterruptedException e) {
        Thread.currentThread().interrupt();
      }
    }
    return answer;
  }

  // Texts are quoted as the client's summaries quote them; null stays null.
  private static String quoted(String text) {
    return text == null ? "null" : '"' + text + '"';
  }
}
