package com.tarnix.messageserver;

import java.rmi.Remote;
import java.rmi.RemoteException;
import java.util.List;

/**
 * The message server as the desktop message client reaches it over RMI. Data-model
 * objects travel as their readable summaries (the client's {@code Text.of}), so that the
 * server needs none of the agent's classes; texts and numbers travel as they are.
 */
public interface MessageServer extends Remote {
  /** The name the server is bound under in its registry. */
  String NAME = "MessageServer";

  String onStartup(String description, String connection) throws RemoteException;

  String onUserLogon(String connection, String desktop, long time, String session)
      throws RemoteException;

  void onUserLogoff(String connection, long time, String session) throws RemoteException;

  void onUserDisconnect(String connection, long time, String session) throws RemoteException;

  void onUserReconnect(String connection, long time, String session) throws RemoteException;

  void refreshSession(String connection, long time, String desktop, String session)
      throws RemoteException;

  String onDataCollected(String connection, String sample) throws RemoteException;

  String onExtendedDataCollected(String connection, String metrics, String sample)
      throws RemoteException;

  String onDesktopPoll(String connection, long time, String text) throws RemoteException;

  String onActionPerformed(String connection, String metadata, String route)
      throws RemoteException;

  /** Every call received so far, oldest first, one line each. */
  List<String> received() throws RemoteException;
}
