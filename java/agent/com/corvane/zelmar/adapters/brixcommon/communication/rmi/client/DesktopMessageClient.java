package com.corvane.zelmar.adapters.brixcommon.communication.rmi.client;

import com.corvane.zelmar.adapters.brixcommon.datamodel.DesktopConnection;
import com.corvane.zelmar.adapters.brixcommon.datamodel.DesktopInformation;
import com.corvane.zelmar.adapters.brixcommon.datamodel.Sample;
import com.corvane.zelmar.adapters.brixcommon.datamodel.UserSession;
import com.tarnix.testing.Answers;
import com.tarnix.testing.Calls;
import com.tarnix.testing.Faults;
import com.tarnix.testing.Text;
import java.util.Map;

/**
 * The message client the native component talks to. Every call is recorded with its
 * arguments ({@link Calls}), may be made to throw ({@link Faults}, place
 * "DesktopMessageClient.&lt;method&gt;"), and answers what {@link Answers} holds for the
 * method (null unless told otherwise). After {@code setProviderUrl("rmi://host:port/name")}
 * the data calls go to that message server over RMI instead, and its failures arrive as
 * RMI exceptions.
 */
public class DesktopMessageClient {
  private volatile String providerUrl;
  private volatile String configDirectory;
  private volatile String certificate;
  private volatile boolean disposed;
  private volatile MessageServerConnection server;

  public DesktopMessageClient() {
    Faults.hit("DesktopMessageClient.<init>");
    Calls.record("DesktopMessageClient");
  }

  public void initialize(String configDirectory, String certificate) {
    deliver("initialize", null, configDirectory, certificate);
    this.configDirectory = configDirectory;
    this.certificate = certificate;
  }

  public void setProviderUrl(String providerUrl) {
    deliver("setProviderUrl", null, providerUrl);
    this.providerUrl = providerUrl;
    MessageServerConnection previous = server;
    server = MessageServerConnection.forUrl(providerUrl);
    if (previous != null) previous.close();
  }

  public String onStartup(String description, DesktopConnection connection) {
    return deliver("onStartup", s -> s.onStartup(description, Text.of(connection)),
        description, connection);
  }

  public String onUserLogon(
      DesktopConnection connection, DesktopInformation desktop, long time, UserSession session) {
    return deliver("onUserLogon",
        s -> s.onUserLogon(Text.of(connection), Text.of(desktop), time, Text.of(session)),
        connection, desktop, time, session);
  }

  public void onUserLogoff(DesktopConnection connection, long time, UserSession session) {
    deliver("onUserLogoff", s -> {
          s.onUserLogoff(Text.of(connection), time, Text.of(session));
          return null;
        }, connection, time, session);
  }

  public void onUserDisconnect(DesktopConnection connection, long time, UserSession session) {
    deliver("onUserDisconnect", s -> {
          s.onUserDisconnect(Text.of(connection), time, Text.of(session));
          return null;
        }, connection, time, session);
  }

  public void onUserReconnect(DesktopConnection connection, long time, UserSession session) {
    deliver("onUserReconnect", s -> {
          s.onUserReconnect(Text.of(connection), time, Text.of(session));
          return null;
        }, connection, time, session);
  }

  public String onDataCollected(DesktopConnection connection, Sample sample) {
    return deliver("onDataCollected", s -> s.onDataCollected(Text.of(connection), Text.of(sample)),
        connection, sample);
  }

  public String onExtendedDataCollected(
      DesktopConnection connection, Map<?, ?> metrics, Sample sample) {
    return deliver("onExtendedDataCollected",
        s -> s.onExtendedDataCollected(Text.of(connection), Text.of(metrics), Text.of(sample)),
        connection, metrics, sample);
  }

  public void refreshSession(
      DesktopConnection connection, long time, DesktopInformation desktop, UserSession session) {
    deliver("refreshSession", s -> {
          s.refreshSession(Text.of(connection), time, Text.of(desktop), Text.of(session));
          return null;
        }, connection, time, desktop, session);
  }

  public String onDesktopPoll(DesktopConnection connection, long time, String text) {
    return deliver("onDesktopPoll", s -> s.onDesktopPoll(Text.of(connection), time, text),
        connection, time, text);
  }

  public String onActionPerformed(DesktopConnection connection, Map<?, ?> metadata, String route) {
    return deliver("onActionPerformed",
        s -> s.onActionPerformed(Text.of(connection), Text.of(metadata), route),
        connection, metadata, route);
  }

  public void dispose() {
    deliver("dispose", null);
    disposed = true;
    MessageServerConnection previous = server;
    server = null;
    if (previous != null) previous.close();
  }

  public String getProviderUrl() {
    return providerUrl;
  }

  public String getConfigDirectory() {
    return configDirectory;
  }

  public String getCertificate() {
    return certificate;
  }

  public boolean isDisposed() {
    return disposed;
  }

  // The one road to the message server. With an RMI provider the call goes there and is
  // not kept here (a long-running host would otherwise fill the heap with records);
  // without one it is recorded and answered from the test controls.
  private String deliver(
      String method, MessageServerConnection.Call<String> remote, Object... arguments) {
    MessageServerConnection connection = server;
    if (connection != null && remote != null) {
      Faults.hit("DesktopMessageClient." + method);
      return connection.call(remote);
    }
    Calls.record(method, arguments);
    Faults.hit("DesktopMessageClient." + method);
    return Answers.get(method);
  }
}
