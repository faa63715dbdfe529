package com.corvane.zelmar.adapters.brixcommon.datamodel;

import java.io.Serializable;
import java.util.List;
import java.util.Map;

public interface UserSession extends Serializable {
  Integer getId();

  String getSid();

  String getUser();

  String getDomain();

  /** Null when the session was made without a connection state. */
  Boolean getConnected();

  Map<String, String> getProperties();

  List<Metric> getMetrics();

  List<RemoteApp> getRemoteApps();
}
