package com.corvane.zelmar.adapters.brixcommon.datamodel;

import java.io.Serializable;
import java.util.List;

public interface Metric extends Serializable {
  String getName();

  /** A Double, a Long, a String, or null when no value was put. */
  Object getValue();

  List<Metric> getInstances();
}
