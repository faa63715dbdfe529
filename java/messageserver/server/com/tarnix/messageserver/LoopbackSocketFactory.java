package com.tarnix.messageserver;

import java.io.IOException;
import java.io.Serializable;
import java.net.InetAddress;
import java.net.InetSocketAddress;
import java.net.ServerSocket;
import java.rmi.server.RMIServerSocketFactory;

/**
 * Listens on 127.0.0.1 only. The address can be reused at once, so that a server
 * restarted on the port of its predecessor gets it back.
 */
final class LoopbackSocketFactory implements RMIServerSocketFactory, Serializable {
  private static final long serialVersionUID = 1L;

  @Override
  public ServerSocket createServerSocket(int port) throws IOException {
    ServerSocket socket = new ServerSocket();
    try {
      socket.setReuseAddress(true);
      socket.bind(new InetSocketAddress(InetAddress.getLoopbackAddress(), port));
    } catch (IOException e) {
      socket.close();
      throw e;
    }
    return socket;
  }

  // One factory stands for all: RMI shares a listening endpoint between equal factories.
  @Override
  public boolean equals(Object other) {
    return other instanceof LoopbackSocketFactory;
  }

  @Override
  public int hashCode() {
    return LoopbackSocketFactory.class.hashCode();
  }
}
