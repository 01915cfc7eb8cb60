#!/usr/bin/env bash
# A small tree that holds nothing wrong, then the same with one thing wrong: tools/check has to pass
# the first and to name file and line of each second.
set -euo pipefail
check=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)/tools/check
trees=$(mktemp -d)
trap 'rm -rf "$trees"' EXIT
failed=0

# put FILE LINE ...: writes a file of the tree that is the current directory.
put() {
  mkdir -p "$(dirname "$1")"
  printf '%s\n' "${@:2}" >"$1"
}

# lines COUNT TEXT: that many lines.
lines() {
  local i
  for ((i = 0; i < $1; ++i)); do echo "$2"; done
}

new_tree() {
  cd "$(mktemp -d "$trees/tree-XXXXXX")"
  put platform/base/include/platform/text.h '#include <string>'
  put platform/qt/include/platform/qt/QtText.h '#include <QString>'
  put wizard/window/include/wizard/PageWindow.h '#include <QWidget>'
  put linklib/frames/include/linklib/Frame.h '#include <span>'
  put linklib/core/include/linklib/Session.h '#include "ports/ports.h"' '#include "platform/serial.h"'
  put platform/posix/serial.cpp '#include <termios.h>'
  put platform/windows/serial.cpp '#include <windows.h>'
  put firmware/QALclass.cpp '#include "QalParser.h"' '#include "platform/text.h"'
  put pages/Step1.cpp '#include <QLabel>' '#include "wizard/PageWindow.h"' '#include "platform/qt/QtText.h"'
  put mount/Mount.cpp '#include "linklib/Frame.h"'
  put tools/tour/main.cpp '#include "app/App.h"' '#include <QTest>'
  put tests/link/stub.cpp '#include <unistd.h>' '#include "mount/Mount.h"'
  put docs/page.md 'The folder is `~/Tarnwick`, the site https://example.org/home/site/work/.'
  put build/release/made.cpp '#include "../made.h"'
  {
    echo 'constexpr int kTable[] = {'
    lines 70 '    1,'
    printf '%s\n' '};' 'namespace tarnwick {' 'class Long {' 'public:' '  Long() : mA{1}, mB{2} {}'
    lines 70 '  int F(int a = 1) const { return "}{"[a] + (a == 1000'\''0 ? 1 : 0); }  // {'
    printf '%s\n' '};' 'int G() {'
    lines 58 '  { H(); }'
    printf '%s\n' '}' '}  // namespace tarnwick'
  } >firmware/Lengths.cpp
}

new_tree
"$check" . || { echo "The tree without a fault does not pass."; failed=1; }

# fault EXPECTED FILE LINE ...: the tree with that file gives exactly one finding, which begins so.
fault() {
  local expected=$1 found status=0
  new_tree
  put "${@:2}"
  found=$("$check" . 2>&1) || status=$?
  if [ "$status" != 1 ] || [ "$(wc -l <<<"$found")" != 1 ] || [ "${found#"$expected"}" = "$found" ]; then
    printf 'Expected one finding: %s\nExit %s and found:\n%s\n' "$expected" "$status" "$found"
    failed=1
  fi
}

mapfile -t body < <(lines 59 '  F();')
mapfile -t page < <(lines 401 '')

fault 'settings/A.cpp:2: settings includes link/L.h' settings/A.cpp '' '#include "link/L.h"'
fault 'ports/A.h:1: ports includes firmware/Q.h' ports/A.h '#include <firmware/Q.h>'
fault 'pages/A.cpp:1: pages includes app/App.h' pages/A.cpp '#include "app/App.h"'
fault 'app/A.cpp:1: app includes mount/Mount.h' app/A.cpp '#include "mount/Mount.h"'
fault 'app/A.cpp:1: app includes support/UserDouble.h' app/A.cpp '#include "support/UserDouble.h"'
fault 'linklib/core/A.cpp:1: linklib includes settings/S.h' linklib/core/A.cpp '#include "settings/S.h"'
fault 'mount/A.cpp:1: mount includes linklib/Session.h' mount/A.cpp '#include "linklib/Session.h"'
fault 'mount/A.cpp:1: mount includes ports/ports.h' mount/A.cpp '#include "ports/ports.h"'
fault 'tests/A.cpp:1: includes ../link/A.h by a path' tests/A.cpp '#include "../link/A.h"'
fault 'wizard/engine/A.cpp:1: includes QTimer,' wizard/engine/A.cpp '#include <QTimer>'
fault 'settings/A.cpp:1: includes QtCore/QString,' settings/A.cpp '#  include <QtCore/QString>'
fault 'link/A.cpp:1: includes platform/qt/QtText.h,' link/A.cpp '#include "platform/qt/QtText.h"'
fault 'wizard/controller/A.cpp:1: includes wizard/PageWindow.h,' wizard/controller/A.cpp '#include "wizard/PageWindow.h"'
fault 'programmer/A.cpp:1: includes unistd.h,' programmer/A.cpp '#include <unistd.h>'
fault 'app/A.cpp:1: includes sys/stat.h,' app/A.cpp '#include <sys/stat.h>'
fault 'linklib/core/A.cpp:1: includes termios.h,' linklib/core/A.cpp '#include <termios.h>'
fault 'platform/base/A.cpp:1: includes fcntl.h,' platform/base/A.cpp '#include <fcntl.h>'
fault 'link/A.cpp:1: includes windows.h,' link/A.cpp '#include <windows.h>'
fault 'link/A.cpp:401: the file is longer' link/A.cpp "${page[@]}"
fault 'link/A.cpp:2: the function is 61 lines' link/A.cpp 'namespace tarnwick {' 'void F() {' "${body[@]}" '}' '}'
fault 'link/A.h:2: the function is 62 lines' link/A.h 'struct S {' '  S(int a)' '      : mA{a} {' "${body[@]}" '}' '};'
fault 'link/A.cpp:1: the function is 61 lines' link/A.cpp 'const auto f = [](int a) {' "${body[@]}" '};'
fault 'link/A.cpp:2: a carriage return' link/A.cpp 'int a;' $'int b;\r'
for place in work root farm home/someone; do
  fault 'docs/A.md:2: a path of the machine' docs/A.md '' "See /$place/main."
done

exit "$failed"
