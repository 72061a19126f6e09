#!/usr/bin/env bash
# ryad at a real terminal (tmux): Tab completes a command name, and Up
# recalls the last command of the previous run from the history file.
set -euo pipefail
ryad=$1
if ! command -v tmux >/dev/null; then
  echo "tmux is missing (scripts/install-deps.sh installs it)" >&2
  exit 1
fi
data=$(mktemp -d)
socket="ryad-terminal-$$"
trap 'tmux -L "$socket" kill-server 2>/dev/null || true; rm -rf "$data"' EXIT

screen() { tmux -L "$socket" capture-pane -p -t run; }
# Waits until the screen's last non-empty line is the one given (a pattern).
wait_for() {
  for _ in $(seq 1 100); do
    if screen | grep -v '^$' | tail -1 | grep -qE "$1"; then return 0; fi
    sleep 0.1
  done
  echo "expected a line matching '$1'; the screen shows:" >&2
  screen >&2
  return 1
}
start() {
  tmux -L "$socket" new-session -d -s run -x 160 -y 40 "env RYAD_DATA_DIR=$data $(realpath "$ryad")"
  wait_for '^Command: ?$'
}
stop() {
  tmux -L "$socket" send-keys -t run C-u 'QUIT' Enter
  for _ in $(seq 1 50); do tmux -L "$socket" has-session -t run 2>/dev/null || return 0; sleep 0.1; done
  echo "ryad did not end after QUIT" >&2
  return 1
}

start
tmux -L "$socket" send-keys -t run 'ATTO' Tab
wait_for '^Command: attout ?$'
tmux -L "$socket" send-keys -t run C-u 'REGEN' Enter
wait_for '^Command: ?$'
stop

start
tmux -L "$socket" send-keys -t run Up
wait_for '^Command: QUIT$'
tmux -L "$socket" send-keys -t run Up
wait_for '^Command: REGEN$'
stop
echo "terminal: completion and history hold"
