package com.corvane.zelmar.adapters.brixcommon.datamodel;

import java.io.Serializable;
import java.util.List;
import java.util.Map;

public interface RemoteApp extends Serializable {
  String getId();

  Map<String, String> getProperties();

  List<Metric> getMetrics();
}
