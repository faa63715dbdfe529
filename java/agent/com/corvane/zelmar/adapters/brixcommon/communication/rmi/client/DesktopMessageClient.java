package com.corvane.zelmar.adapters.brixcommon.communication.rmi.client;

import com.corvane.zelmar.adapters.brixcommon.datamodel.DesktopConnection;
import com.corvane.zelmar.adapters.brixcommon.datamodel.DesktopInformation;
import com.corvane.zelmar.adapters.brixcommon.datamodel.Sample;
import com.corvane.zelmar.adapters.brixcommon.datamodel.UserSession;
import com.tarnix.testing.Answers;
import com.tarnix.testing.Calls;
import com.tarnix.testing.Faults;
import java.util.Map;

/**
 * The message client the native component talks to. Every call is recorded with its
 * arguments ({@link Calls}), may be made to throw ({@link Faults}, place
 * "DesktopMessageClient.&lt;method&gt;"), and answers what {@link Answers} holds for the
 * method (null unless told otherwise).
 */
public class DesktopMessageClient {
  private volatile String providerUrl;
  private volatile String configDirectory;
  private volatile String certificate;
  private volatile boolean disposed;

  public DesktopMessageClient() {
    Faults.hit("DesktopMessageClient.<init>");
    Calls.record("DesktopMessageClient");
  }

  public void initialize(String configDirectory, String certificate) {
    deliver("initialize", configDirectory, certificate);
    this.configDirectory = configDirectory;
    this.certificate = certificate;
  }

  public void setProviderUrl(String providerUrl) {
    deliver("setProviderUrl", providerUrl);
    this.providerUrl = providerUrl;
  }

  public String onStartup(String description, DesktopConnection connection) {
    return deliver("onStartup", description, connection);
  }

  public String onUserLogon(
      DesktopConnection connection, DesktopInformation desktop, long time, UserSession session) {
    return deliver("onUserLogon", connection, desktop, time, session);
  }

  public void onUserLogoff(DesktopConnection connection, long time, UserSession session) {
    deliver("onUserLogoff", connection, time, session);
  }

  public void onUserDisconnect(DesktopConnection connection, long time, UserSession session) {
    deliver("onUserDisconnect", connection, time, session);
  }

  public void onUserReconnect(DesktopConnection connection, long time, UserSession session) {
    deliver("onUserReconnect", connection, time, session);
  }

  public String onDataCollected(DesktopConnection connection, Sample sample) {
    return deliver("onDataCollected", connection, sample);
  }

  public String onExtendedDataCollected(
      DesktopConnection connection, Map<?, ?> metrics, Sample sample) {
    return deliver("onExtendedDataCollected", connection, metrics, sample);
  }

  public void refreshSession(
      DesktopConnection connection, long time, DesktopInformation desktop, UserSession session) {
    deliver("refreshSession", connection, time, desktop, session);
  }

  public String onDesktopPoll(DesktopConnection connection, long time, String text) {
    return deliver("onDesktopPoll", connection, time, text);
  }

  public String onActionPerformed(DesktopConnection connection, Map<?, ?> metadata, String route) {
    return deliver("onActionPerformed", connection, metadata, route);
  }

  public void dispose() {
    deliver("dispose");
    disposed = true;
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

  // The one road to the message server: a test server over RMI can take over here.
  private String deliver(String method, Object... arguments) {
    Calls.record(method, arguments);
    Faults.hit("DesktopMessageClient." + method);
    return Answers.get(method);
  }
}
