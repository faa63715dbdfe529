package com.corvane.zelmar.adapters.brixcommon.datamodel;

import com.tarnix.testing.Faults;
import com.tarnix.testing.Text;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

public class BaseUserSession implements UserSession, Text.Describable {
  private static final long serialVersionUID = 1L;

  private Integer id;
  private String sid;
  private String user;
  private String domain;
  private Boolean connected;
  private final Map<String, String> properties = new LinkedHashMap<>();
  private final List<Metric> metrics = new ArrayList<>();
  private final List<RemoteApp> remoteApps = new ArrayList<>();

  public BaseUserSession() {
    Faults.hit("BaseUserSession.<init>");
  }

  public BaseUserSession(int id, String sid, String user, String domain) {
    Faults.hit("BaseUserSession.<init>");
    this.id = id;
    this.sid = sid;
    this.user = user;
    this.domain = domain;
  }

  public BaseUserSession(int id, String sid, String user, String domain, boolean connected) {
    this(id, sid, user, domain);
    this.connected = connected;
  }

  public void putProperty(String name, String value) {
    Faults.hit("BaseUserSession.putProperty");
    properties.put(name, value);
  }

  public void putMetric(Metric metric) {
    Faults.hit("BaseUserSession.putMetric");
    metrics.add(metric);
  }

  public void putRemoteApp(RemoteApp app) {
    Faults.hit("BaseUserSession.putRemoteApp");
    remoteApps.add(app);
  }

  public Integer getId() {
    return id;
  }

  public String getSid() {
    return sid;
  }

  public String getUser() {
    return user;
  }

  public String getDomain() {
    return domain;
  }

  public Boolean getConnected() {
    return connected;
  }

  public Map<String, String> getProperties() {
    return properties;
  }

  public List<Metric> getMetrics() {
    return metrics;
  }

  public List<RemoteApp> getRemoteApps() {
    return remoteApps;
  }

  /** Properties in the order they were put. */
  public String describe() {
    StringBuilder text = new StringBuilder("BaseUserSession{id=").append(id);
    text.append(", sid=").append(Text.of(sid));
    text.append(", user=").append(Text.of(user));
    text.append(", domain=").append(Text.of(domain));
    text.append(", connected=").append(connected);
    text.append(", properties={");
    boolean first = true;
    for (Map.Entry<String, String> property : properties.entrySet()) {
      if (!first) text.append(", ");
      first = false;
      text.append(Text.of(property.getKey())).append('=').append(Text.of(property.getValue()));
    }
    text.append("}, metrics=").append(Text.ofList(metrics));
    text.append(", remoteApps=").append(Text.ofList(remoteApps));
    return text.append('}').toString();
  }
}
