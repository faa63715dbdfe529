package com.corvane.zelmar.adapters.brixcommon.datamodel;

import com.tarnix.testing.Faults;
import com.tarnix.testing.Text;
import java.util.ArrayList;
import java.util.List;

public class BaseMetric implements Metric, Text.Describable {
  private static final long serialVersionUID = 1L;

  private String name;
  private Object value;
  private final List<Metric> instances = new ArrayList<>();

  public BaseMetric() {
    Faults.hit("BaseMetric.<init>");
  }

  public BaseMetric(String name) {
    Faults.hit("BaseMetric.<init>");
    this.name = name;
  }

  public void putDoubleValue(double value) {
    Faults.hit("BaseMetric.putDoubleValue");
    this.value = value;
  }

  public void putLongValue(long value) {
    Faults.hit("BaseMetric.putLongValue");
    this.value = value;
  }

  public void putStringValue(String value) {
    Faults.hit("BaseMetric.putStringValue");
    this.value = value;
  }

  public void addInstance(Metric instance) {
    Faults.hit("BaseMetric.addInstance");
    instances.add(instance);
  }

  public String getName() {
    return name;
  }

  public Object getValue() {
    return value;
  }

  public List<Metric> getInstances() {
    return instances;
  }

  /** The value is shown with its kind: double 1.5, long 7, string "x", or none. */
  public String describe() {
    String shown =
        value instanceof Double ? "double " + value
            : value instanceof Long ? "long " + value
            : value instanceof String ? "string " + Text.of(value)
            : "none";
    StringBuilder text = new StringBuilder("BaseMetric{name=").append(Text.of(name));
    text.append(", value=").append(shown);
    if (!instances.isEmpty()) text.append(", instances=").append(Text.ofList(instances));
    return text.append('}').toString();
  }
}
