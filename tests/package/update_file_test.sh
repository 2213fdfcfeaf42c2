#!/usr/bin/env bash
# Runs the client's update file the way the client starts it and checks what it installs:
# the new client and help page over an old one, waiting for the old client to end, refusing a
# folder without a client, and (with a stand-in client) starting the installed program.
#   tests/package/update_file_test.sh UPDATE_FILE VERSION HELP_PAGE MAKE_UPDATE_FILE
set -euo pipefail
update_file="$1" version="$2" help_page="$3" make_update_file="$4"
work="$(mktemp -d)"
trap 'wait; rm -rf "$work"' EXIT
failed=0

check() { # DESCRIPTION COMMAND...: one line per check
  if "${@:2}"; then
    echo "ok: $1"
  else
    echo "FAILED: $1"
    failed=$((failed + 1))
  fi
}

old_client() { # FOLDER: an installed client of an older version
  mkdir -p "$1/help"
  printf '#!/bin/sh\necho tavlo 0.0.1\n' >"$1/tavlo"
  chmod 750 "$1/tavlo"
  echo old >"$1/help/Tavlo.html"
}

run_update() { # OUTPUT COMMAND...: exit code of the update file, its output in OUTPUT
  local rc=0
  "${@:2}" >"$1" 2>&1 </dev/null || rc=$?
  echo "$rc"
}

# Installed where TAVLO_INSTALL_DIR says, quietly, once the old client (here a process that
# ends in a second and a half) is gone.
old_client "$work/app"
(sleep 1.5 && touch "$work/old-ended") &
old_pid=$!
SECONDS=0
rc="$(run_update "$work/out" env TAVLO_INSTALL_DIR="$work/app" TAVLO_UPDATE_WAIT_PID="$old_pid" \
  TAVLO_UPDATE_NO_START=1 "$update_file")"
check "exits 0 ($rc)" [ "$rc" = 0 ]
check "prints nothing" [ ! -s "$work/out" ]
check "waited for the old client" [ -e "$work/old-ended" ]
check "went on once it ended (${SECONDS} s)" [ "$SECONDS" -lt 10 ]
check "installed client prints tavlo $version" \
  [ "$("$work/app/tavlo" --version 2>&1)" = "tavlo $version" ]
check "installed client keeps its mode" [ "$(stat -c %a "$work/app/tavlo")" = 750 ]
check "help page installed" cmp -s "$help_page" "$work/app/help/Tavlo.html"
check "web window program installed" [ -x "$work/app/tavlo-web" ]
check "no temporary files left" [ "$(cd "$work/app" && find . | sort | tr '\n' ' ')" = \
  ". ./help ./help/Tavlo.html ./tavlo ./tavlo-web " ]

# A folder without a client is refused with a message, and nothing is written there.
mkdir "$work/empty"
rc="$(run_update "$work/out" env TAVLO_INSTALL_DIR="$work/empty" TAVLO_UPDATE_NO_START=1 \
  "$update_file")"
check "no client: refused ($rc)" [ "$rc" != 0 ]
check "no client: says so" grep -q "holds no tavlo" "$work/out"
check "no client: nothing written" [ -z "$(ls -A "$work/empty")" ]

# Without TAVLO_INSTALL_DIR the update file installs into its own folder, here found through a
# relative path, and starts the installed client: a stand-in that leaves a marker.
# shellcheck disable=SC2016 # the stand-in's own text, expanded when it runs
printf '#!/bin/sh\necho "started in $(pwd) ${TAVLO_INSTALL_DIR:-alone}" >"$TAVLO_TEST_MARKER"\n' \
  >"$work/stand-in"
"$make_update_file" "$work/stand-in" "$help_page" "$version" "$work/stand-in.run"
old_client "$work/own"
mv "$work/stand-in.run" "$work/own/"
rc="$(cd "$work" && run_update "$work/out" env -u TAVLO_INSTALL_DIR \
  TAVLO_TEST_MARKER="$work/marker" own/stand-in.run)"
check "own folder: exits 0 ($rc)" [ "$rc" = 0 ]
for _ in $(seq 1 50); do
  [ -s "$work/marker" ] && break
  sleep 0.1
done
check "own folder: installed client started there" \
  [ "$(cat "$work/marker" 2>/dev/null)" = "started in $work/own alone" ]

if [ "$failed" -eq 0 ]; then
  echo "update_file_test: PASS"
else
  echo "update_file_test: FAIL ($failed checks)"
  exit 1
fi
