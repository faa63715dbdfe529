# Sourced: the Wine settings every Windows test run uses, and one warm wineserver so that
# each test process does not pay the server's start-up.
export WINEPREFIX="${WINEPREFIX:-$PWD/build/wine-prefix}"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="winedbg.exe=d;mscoree=d;mshtml=d"
export LC_ALL=C.UTF-8
wine_start() {
  mkdir -p "$WINEPREFIX"
  wineserver -p
  wine cmd /c exit </dev/null >/dev/null 2>&1 || true
}
wine_stop() { wineserver -k 2>/dev/null || true; }
