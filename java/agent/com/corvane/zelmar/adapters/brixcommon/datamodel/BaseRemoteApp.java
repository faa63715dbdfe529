package com.corvane.zelmar.adapters.brixcommon.datamodel;

import com.tarnix.testing.Faults;
import com.tarnix.testing.Text;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

public class BaseRemoteApp implements RemoteApp, Text.Describable {
  private static final long serialVersionUID = 1L;

  private String id;
  private final Map<String, String> properties = new LinkedHashMap<>();
  private final List<Metric> metrics = new ArrayList<>();

  public BaseRemoteApp() {
    Faults.hit("BaseRemoteApp.<init>");
  }

  public BaseRemoteApp(String id) {
    Faults.hit("BaseRemoteApp.<init>");
    this.id = id;
  }

  public void putProperty(String name, String value) {
    Faults.hit("BaseRemoteApp.putProperty");
    properties.put(name, value);
  }

  public void putMetric(Metric metric) {
    Faults.hit("BaseRemoteApp.putMetric");
    metrics.add(metric);
  }

  public String getId() {
    return id;
  }

  public Map<String, String> getProperties() {
    return properties;
  }

  public List<Metric> getMetrics() {
    return metrics;
  }

  /** Properties in the order they were put. */
  public String describe() {
    StringBuilder text = new StringBuilder("BaseRemoteApp{id=").append(Text.of(id));
    text.append(", properties={");
    boolean first = true;
    for (Map.Entry<String, String> property : properties.entrySet()) {
      if (!first) text.append(", ");
      first = false;
      text.append(Text.of(property.getKey())).append('=').append(Text.of(property.getValue()));
    }
    text.append("}, metrics=").append(Text.ofList(metrics));
    return text.append('}').toString();
  }
}
