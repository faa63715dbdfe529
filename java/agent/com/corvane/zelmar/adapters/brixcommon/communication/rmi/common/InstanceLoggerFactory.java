package com.corvane.zelmar.adapters.brixcommon.communication.rmi.common;

import com.tarnix.testing.Calls;
import com.tarnix.testing.Faults;

/** Where the Java side of the message client writes its log. */
public class InstanceLoggerFactory {
  private static volatile String folder;

  public InstanceLoggerFactory() {
    Faults.hit("InstanceLoggerFactory.<init>");
    Calls.record("InstanceLoggerFactory");
  }

  public InstanceLoggerFactory(String folder) {
    Faults.hit("InstanceLoggerFactory.<init>");
    Calls.record("InstanceLoggerFactory", folder);
    InstanceLoggerFactory.folder = folder;
  }

  /** The folder of the last factory made with one, or null. */
  public static String getFolder() {
    return folder;
  }
}
