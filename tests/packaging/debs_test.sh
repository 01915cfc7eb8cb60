#!/usr/bin/env bash
# debs_test.sh BUILD: the packages for a Debian are made without an error that lintian knows, and ask for what
# their programs load.
set -euo pipefail
cd "$1"
failed=0
fail() { echo "FAILED: $*" >&2; failed=1; }
rm -f ./*.deb
cmake --build . --target debs >/dev/null
lintian --allow-root --fail-on error ./*.deb || fail "lintian"
asks() { dpkg-deb -f "$1"_*.deb Depends; }
asks tarnwick | grep -q 'tarnwick-tools (= .*libcurl4.*libqt6widgets6' || fail "tarnwick asks for $(asks tarnwick)"
asks tarnwick-tools | grep -q libcurl4 || fail "tarnwick-tools cannot fetch"
for package in tarnwick-tools tarnwick-mount; do
  ! asks $package | grep -qi qt || fail "$package asks for a toolkit"
done
exit "$failed"
