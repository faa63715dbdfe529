package com.corvane.zelmar.adapters.brixcommon.datamodel;

/** An agent jar out of step with the component: putMetric takes a text here. */
public class BaseRemoteApp {
  public BaseRemoteApp() {}

  public BaseRemoteApp(String id) {}

  public void putProperty(String name, String value) {}

  public void putMetric(String metric) {}
}
