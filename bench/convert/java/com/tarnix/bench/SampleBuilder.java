package com.tarnix.bench;

import com.corvane.zelmar.adapters.brixcommon.datamodel.BaseMetric;
import com.corvane.zelmar.adapters.brixcommon.datamodel.BaseRemoteApp;
import com.corvane.zelmar.adapters.brixcommon.datamodel.BaseSample;
import com.corvane.zelmar.adapters.brixcommon.datamodel.BaseUserSession;

/** The benchmark's sample built in Java alone: the floor for building it through JNI. */
public final class SampleBuilder {
  private final String[] machineNames;
  private final String[] sessionNames;
  private final String[] appNames;
  private final String[] appIds;
  private final int sessions;

  public SampleBuilder(int machineMetrics, int sessions, int sessionMetrics, int apps,
      int appMetrics) {
    this.machineNames = names("machine.metric.", machineMetrics);
    this.sessionNames = names("session.metric.", sessionMetrics);
    this.appNames = names("app.metric.", appMetrics);
    this.appIds = names("app-", apps);
    this.sessions = sessions;
  }

  private static String[] names(String prefix, int count) {
    String[] names = new String[count];
    for (int i = 0; i < count; i++) names[i] = prefix + i;
    return names;
  }

  private static void putMetrics(Object target, String[] names) {
    for (int i = 0; i < names.length; i++) {
      BaseMetric metric = new BaseMetric(names[i]);
      if (i % 5 == 4) metric.putDoubleValue(i + 0.5);
      else metric.putLongValue(i * 1000L);
      if (target instanceof BaseSample) ((BaseSample) target).putMetric(metric);
      else if (target instanceof BaseUserSession) ((BaseUserSession) target).putMetric(metric);
      else ((BaseRemoteApp) target).putMetric(metric);
    }
  }

  public Object build(long time) {
    BaseSample sample = new BaseSample(time);
    putMetrics(sample, machineNames);
    for (int s = 0; s < sessions; s++) {
      BaseUserSession session =
          new BaseUserSession(s + 1, "S-1-5-21-" + s, "user" + s, "CORP", true);
      session.putProperty("client", "pc-" + s);
      session.putProperty("protocol", "rdp");
      putMetrics(session, sessionNames);
      for (String id : appIds) {
        BaseRemoteApp app = new BaseRemoteApp(id);
        putMetrics(app, appNames);
        session.putRemoteApp(app);
      }
      sample.putSession(session);
    }
    return sample;
  }
}
