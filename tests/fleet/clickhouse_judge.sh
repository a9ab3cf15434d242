#!/usr/bin/env bash
# docs/fleet-clickhouse.md does what it shows, with a ClickHouse server that this starts, in a temporary
# folder, and stops.
#
#   clickhouse_judge.sh SOURCE-FOLDER CALIB EXAMPLE MODULES-FOLDER
#
# Exit status: 0, it does; 1, it does not, or no server comes up; 77 as fleet_test.sh.
set -euo pipefail

source=$1
folder=$(mktemp -d)
server=
stop() {
  if [[ $server ]]; then
    kill "$server" || true
    wait "$server" || true
  fi
  rm -rf "$folder"
}
trap stop EXIT

CLICKHOUSE_PORT=$(python3 -c 'import socket
with socket.socket() as free:
    free.bind(("127.0.0.1", 0))
    print(free.getsockname()[1])')
export CLICKHOUSE_PORT
cp "$source"/tests/fleet/clickhouse/*.xml "$folder"
(cd "$folder" && exec clickhouse-server --config-file=config.xml) >"$folder/output" 2>&1 &
server=$!
for ((tries = 0; ; ++tries)); do
  if clickhouse-client --port "$CLICKHOUSE_PORT" --query 'SELECT 1' >"$folder/answer" 2>&1; then break; fi
  if ((tries == 100)) || ! kill -0 "$server" 2>/dev/null; then
    cat "$folder/output" "$folder/answer" >&2
    exit 1
  fi
  sleep 0.3
done
"$source/tests/fleet/fleet_test.sh" "$@" "$source/docs/fleet-clickhouse.md"
