package com.corvane.zelmar.adapters.brixcommon.datamodel;

import com.tarnix.testing.Faults;
import com.tarnix.testing.Text;
import java.util.ArrayList;
import java.util.List;

public class BaseSample implements Sample, Text.Describable {
  private static final long serialVersionUID = 1L;

  private Long time;
  private final List<Metric> metrics = new ArrayList<>();
  private final List<UserSession> sessions = new ArrayList<>();

  public BaseSample() {
    Faults.hit("BaseSample.<init>");
  }

  public BaseSample(long time) {
    Faults.hit("BaseSample.<init>");
    this.time = time;
  }

  public void putMetric(Metric metric) {
    Faults.hit("BaseSample.putMetric");
    metrics.add(metric);
  }

  public void putSession(UserSession session) {
    Faults.hit("BaseSample.putSession");
    sessions.add(session);
  }

  public Long getTime() {
    return time;
  }

  public List<Metric> getMetrics() {
    return metrics;
  }

  public List<UserSession> getSessions() {
    return sessions;
  }

  public String describe() {
    return "BaseSample{time=" + time + ", metrics=" + Text.ofList(metrics)
        + ", sessions=" + Text.ofList(sessions) + "}";
  }
}
