package com.corvane.zelmar.adapters.brixcommon.communication.rmi.client;

import com.tarnix.messageserver.MessageServer;
import java.net.MalformedURLException;
import java.rmi.ConnectException;
import java.rmi.Naming;
import java.rmi.NoSuchObjectException;
import java.rmi.NotBoundException;
import java.rmi.RemoteException;

/**
 * The road to a message server at an "rmi://host:port/name" address. The server's stub
 * is looked up on first use and kept; when a call on a kept stub finds nobody there (the
 * server restarted), the stub is looked up once more and the call made again. A call that
 * still fails throws its RMI exception to the caller, unchanged.
 */
final class MessageServerConnection {
  interface Call<T> {
    T on(MessageServer server) throws RemoteException;
  }

  private final String url;
  private MessageServer server;

  private MessageServerConnection(String url) {
    this.url = url;
  }

  /** A connection for an RMI address, or null for any other (calls then stay local). */
  static MessageServerConnection forUrl(String url) {
    return url != null && url.startsWith("rmi://") ? new MessageServerConnection(url) : null;
  }

  synchronized <T> T call(Call<T> call) {
    boolean kept = server != null;
    try {
      try {
        return call.on(stub());
      } catch (ConnectException | NoSuchObjectException gone) {
        server = null;
        if (!kept) throw gone;
        // Nothing was delivered: the kept stub named a server that is no longer there.
        return call.on(stub());
      }
    } catch (RemoteException e) {
      server = null;
      throw MessageServerConnection.<RuntimeException>sneaky(e);
    }
  }

  synchronized void close() {
    server = null;
  }

  private MessageServer stub() throws RemoteException {
    if (server != null) return server;
    try {
      server = (MessageServer) Naming.lookup(url);
    } catch (NotBoundException | MalformedURLException e) {
      throw new RemoteException("no message server at " + url, e);
    }
    return server;
  }

  // RMI failures reach the native caller as what they are (java.rmi.ConnectException),
  // although the client's methods declare no checked exceptions.
  @SuppressWarnings("unchecked")
  private static <T extends Throwable> T sneaky(Throwable t) throws T {
    throw (T) t;
  }
}
