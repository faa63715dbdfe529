package com.tarnix.messageserver;

import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;
import java.io.PrintStream;
import java.net.ServerSocket;
import java.nio.charset.StandardCharsets;
import java.rmi.registry.LocateRegistry;
import java.rmi.registry.Registry;
import java.rmi.server.UnicastRemoteObject;

/**
 * A message server in a process of its own, on 127.0.0.1 only.
 *
 * <p>Arguments: {@code [--port N] [--answer method=text]...}; port 0 (the default) takes
 * a free one. The first line on stdout is {@code LISTENING 127.0.0.1:PORT}; the server is
 * then bound as {@code rmi://127.0.0.1:PORT/MessageServer}. Commands on stdin, one a line,
 * each answered by one line or, for {@code received}, by one {@code RECEIVED} line per
 * call and {@code END}:
 *
 * <pre>
 *   received              what arrived, with \\, \r and \n escaped
 *   clear                 forget what arrived
 *   answer METHOD TEXT    answer TEXT to METHOD from now on
 *   noanswer METHOD       answer null to METHOD
 *   delay MS              take MS milliseconds over every call from now on (0: none)
 *   quit                  stop (as does the end of stdin)
 * </pre>
 */
public final class Main {
  private Main() {}

  public static void main(String[] args) throws Exception {
    // Before anything of RMI reads it: the stubs the server hands out name the loopback.
    System.setProperty("java.rmi.server.hostname", "127.0.0.1");
    int port = 0;
    RecordingMessageServer server = new RecordingMessageServer();
    for (int i = 0; i < args.length; i++) {
      if (args[i].equals("--port") && i + 1 < args.length) {
        port = Integer.parseInt(args[++i]);
      } else if (args[i].equals("--answer") && i + 1 < args.length) {
        String[] answer = args[++i].split("=", 2);
        server.setAnswer(answer[0], answer.length > 1 ? answer[1] : "");
      } else {
        System.err.println("unknown argument: " + args[i]);
        System.exit(2);
      }
    }
    if (port == 0) port = freeLoopbackPort();

    LoopbackSocketFactory sockets = new LoopbackSocketFactory();
    Registry registry = LocateRegistry.createRegistry(port, null, sockets);
    MessageServer stub = (MessageServer) UnicastRemoteObject.exportObject(server, 0, null, sockets);
    registry.rebind(MessageServer.NAME, stub);

    PrintStream out = new PrintStream(System.out, true, "UTF-8");
    out.println("LISTENING 127.0.0.1:" + port);
    serve(server, out);

    UnicastRemoteObject.unexportObject(server, true);
    UnicastRemoteObject.unexportObject(registry, true);
    // RMI keeps threads of its own; the process ends here.
    System.exit(0);
  }

  private static int freeLoopbackPort() throws IOException {
    try (ServerSocket probe = new LoopbackSocketFactory().createServerSocket(0)) {
      return probe.getLocalPort();
    }
  }

  private static void serve(RecordingMessageServer server, PrintStream out) throws IOException {
    BufferedReader in =
        new BufferedReader(new InputStreamReader(System.in, StandardCharsets.UTF_8));
    for (String line; (line = in.readLine()) != null; ) {
      String[] command = line.trim().split(" ", 3);
      switch (command[0]) {
        case "received":
          for (String call : server.received()) out.println("RECEIVED " + escaped(call));
          out.println("END");
          break;
        case "clear":
          server.clear();
          out.println("OK");
          break;
        case "answer":
          server.setAnswer(at(command, 1), command.length > 2 ? command[2] : "");
          out.println("OK");
          break;
        case "noanswer":
          server.setAnswer(at(command, 1), null);
          out.println("OK");
          break;
        case "delay":
          try {
            server.setDelay(Long.parseLong(at(command, 1)));
            out.println("OK");
          } catch (IllegalArgumentException e) {
            out.println("ERROR not a delay: " + line);
          }
          break;
        case "quit":
          return;
        default:
          out.println("ERROR unknown command: " + line);
      }
    }
  }

  private static String at(String[] words, int index) {
    return index < words.length ? words[index] : "";
  }

  static String escaped(String text) {
    StringBuilder result = new StringBuilder(text.length());
    for (char c : text.toCharArray()) {
      if (c == '\\') result.append("\\\\");
      else if (c == '\n') result.append("\\n");
      else if (c == '\r') result.append("\\r");
      else result.append(c);
    }
    return result.toString();
  }
}
