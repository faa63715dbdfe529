package com.tarnix.testing.startup;

import com.tarnix.testing.Faults;
import java.lang.instrument.Instrumentation;

/**
 * Arms faults of the stand-ins before the native start-up reaches them, which no call
 * through the component can do: its machine is made and used within one call. The
 * argument lists "place=exceptionClass:message" entries separated by ";".
 */
public final class FaultsAgent {
  private FaultsAgent() {}

  public static void premain(String arguments, Instrumentation instrumentation) {
    if (arguments == null) return;
    for (String fault : arguments.split(";")) {
      int equals = fault.indexOf('=');
      int colon = fault.indexOf(':', equals + 1);
      if (equals < 0 || colon < 0) throw new IllegalArgumentException("bad fault: " + fault);
      Faults.throwIn(
          fault.substring(0, equals), fault.substring(equals + 1, colon), fault.substring(colon + 1));
    }
  }
}
