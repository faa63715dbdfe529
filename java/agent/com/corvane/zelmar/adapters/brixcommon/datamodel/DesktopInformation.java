package com.corvane.zelmar.adapters.brixcommon.datamodel;

import com.tarnix.testing.Faults;
import com.tarnix.testing.Text;
import java.io.Serializable;
import java.util.ArrayList;
import java.util.List;

public class DesktopInformation implements Serializable, Text.Describable {
  private static final long serialVersionUID = 1L;

  private String name;
  private String fqdn;
  private Integer totalMemory;
  private final List<NetworkInterface> networkInterfaces = new ArrayList<>();

  public DesktopInformation() {
    Faults.hit("DesktopInformation.<init>");
  }

  public DesktopInformation(String name, String FQDN) {
    Faults.hit("DesktopInformation.<init>");
    this.name = name;
    this.fqdn = FQDN;
  }

  public void putTotalMemory(int totalMemory) {
    Faults.hit("DesktopInformation.putTotalMemory");
    this.totalMemory = totalMemory;
  }

  public void addNetworkInterface(NetworkInterface networkInterface) {
    Faults.hit("DesktopInformation.addNetworkInterface");
    networkInterfaces.add(networkInterface);
  }

  public String getName() {
    return name;
  }

  public String getFQDN() {
    return fqdn;
  }

  public Integer getTotalMemory() {
    return totalMemory;
  }

  public List<NetworkInterface> getNetworkInterfaces() {
    return networkInterfaces;
  }

  public String describe() {
    return "DesktopInformation{name=" + Text.of(name) + ", FQDN=" + Text.of(fqdn)
        + ", totalMemory=" + totalMemory
        + ", networkInterfaces=" + Text.ofList(networkInterfaces) + "}";
  }
}
