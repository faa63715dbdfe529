// The kind of data a DumpData call carries; one unsigned byte across the export boundary.
#pragma once

enum DataType : unsigned char {
  eUserSessionStart = 0,
  eUserSessionLogon = 1,
  eUserSessionLogoff = 2,
  eUserSessionRefresh = 3,
  eUserSessionReconnect = 4,
  eUserSessionDisconnect = 5,
  eUserSessionEnd = 6,
  eExtendedData = 7,
  eStartup = 8,
  eSample = 9,
  eTraceRoute = 10,
};

// A desktop poll; deliberately not an enumerator, so its name in messages is "0xff".
constexpr unsigned char eDesktopPoll = 255;
