package com.corvane.zelmar.adapters.brixcommon.datamodel;

import com.tarnix.testing.Faults;
import com.tarnix.testing.Text;
import java.io.Serializable;

public class NetworkInterface implements Serializable, Text.Describable {
  private static final long serialVersionUID = 1L;

  private String description;
  private String macAddress;
  private String ipAddress;
  private String subnetMask;
  private String subnet;
  private Integer linkSpeed;

  public NetworkInterface() {
    Faults.hit("NetworkInterface.<init>");
  }

  public NetworkInterface(String description) {
    Faults.hit("NetworkInterface.<init>");
    this.description = description;
  }

  public void putMacAddress(String macAddress) {
    Faults.hit("NetworkInterface.putMacAddress");
    this.macAddress = macAddress;
  }

  public void putIpAddress(String ipAddress) {
    Faults.hit("NetworkInterface.putIpAddress");
    this.ipAddress = ipAddress;
  }

  public void putSubnetMask(String subnetMask) {
    Faults.hit("NetworkInterface.putSubnetMask");
    this.subnetMask = subnetMask;
  }

  public void putSubnet(String subnet) {
    Faults.hit("NetworkInterface.putSubnet");
    this.subnet = subnet;
  }

  public void putLinkSpeed(int linkSpeed) {
    Faults.hit("NetworkInterface.putLinkSpeed");
    this.linkSpeed = linkSpeed;
  }

  public String getDescription() {
    return description;
  }

  public String getMacAddress() {
    return macAddress;
  }

  public String getIpAddress() {
    return ipAddress;
  }

  public String getSubnetMask() {
    return subnetMask;
  }

  public String getSubnet() {
    return subnet;
  }

  public Integer getLinkSpeed() {
    return linkSpeed;
  }

  public String describe() {
    return "NetworkInterface{description=" + Text.of(description)
        + ", macAddress=" + Text.of(macAddress) + ", ipAddress=" + Text.of(ipAddress)
        + ", subnetMask=" + Text.of(subnetMask) + ", subnet=" + Text.of(subnet)
        + ", linkSpeed=" + linkSpeed + "}";
  }
}
