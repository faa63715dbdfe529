package com.corvane.zelmar.adapters.brixcommon.datamodel;

import com.tarnix.testing.Faults;
import com.tarnix.testing.Text;
import java.io.Serializable;

public class DesktopConnection implements Serializable, Text.Describable {
  private static final long serialVersionUID = 1L;

  private String id;
  private String authToken;
  private String uniqueId;
  private Integer version;
  private String deviceType;

  public DesktopConnection() {
    Faults.hit("DesktopConnection.<init>");
  }

  public DesktopConnection(
      String id, String authToken, String uniqueId, int version, String deviceType) {
    Faults.hit("DesktopConnection.<init>");
    this.id = id;
    this.authToken = authToken;
    this.uniqueId = uniqueId;
    this.version = version;
    this.deviceType = deviceType;
  }

  public String getId() {
    return id;
  }

  public String getAuthToken() {
    return authToken;
  }

  public String getUniqueId() {
    return uniqueId;
  }

  public Integer getVersion() {
    return version;
  }

  public String getDeviceType() {
    return deviceType;
  }

  public String describe() {
    return "DesktopConnection{id=" + Text.of(id) + ", authToken=" + Text.of(authToken)
        + ", uniqueId=" + Text.of(uniqueId) + ", version=" + version
        + ", deviceType=" + Text.of(deviceType) + "}";
  }
}
