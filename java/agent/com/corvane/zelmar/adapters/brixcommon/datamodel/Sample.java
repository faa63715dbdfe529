package com.corvane.zelmar.adapters.brixcommon.datamodel;

import java.io.Serializable;
import java.util.List;

public interface Sample extends Serializable {
  /** Milliseconds since 1970-01-01, or null when the sample was made without a time. */
  Long getTime();

  List<Metric> getMetrics();

  List<UserSession> getSessions();
}
