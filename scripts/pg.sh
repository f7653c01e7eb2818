# shellcheck shell=bash
# A throwaway PostgreSQL server for scripts/test and scripts/bench, sourced by
# both. initdb and postgres refuse to run as root: as root the server runs as
# the "postgres" user of the Debian package (or a system user "qalpg" created
# for it). Trust authentication, loopback only, socket in the server's own
# temporary directory. pg_start exports QALPACK_PG_HOST/PORT/USER/DBNAME for
# the programs; when the server cannot start it exports
# QALPACK_PG_UNAVAILABLE with the reason and says so loudly, and pg_stop says
# it again at exit.
#
# For tests that restart the server in the middle (a dropped connection),
# pg_start also exports:
#   QALPACK_PG_CTL    the server's pg_ctl
#   QALPACK_PG_DATA   its data directory
#   QALPACK_PG_LOG    its log file (give it to pg_ctl -l, or the server keeps
#                     the caller's output open)
#   QALPACK_PG_RUNAS  the user the server runs as, empty for the caller
#                     itself; when set, run pg_ctl as "runuser -u <user> --"
# so that "$QALPACK_PG_CTL -D $QALPACK_PG_DATA -l $QALPACK_PG_LOG -w restart
# -m fast" restarts it on the same port. Such tests must not run beside
# others (CTest RUN_SERIAL).
#
# The sourcing script installs the traps:
#   trap pg_stop EXIT; pg_start || true
#
#   pg_what    what runs on the server, for the messages ("server tests")
#   pg_dbname  the database created on it ("qalpack_test")
pg_what=${pg_what:-server tests}
pg_dbname=${pg_dbname:-qalpack_test}
pg_dir=
pg_bin=
pg_user=
pg_unavailable=

pg_banner() {
  echo "#################################################################" >&2
  echo "## PostgreSQL $pg_what SKIPPED: $1" >&2
  echo "#################################################################" >&2
}

pg_as_server_user() {
  if [ -n "$pg_user" ]; then
    runuser -u "$pg_user" -- "$@"
  else
    "$@"
  fi
}

pg_stop() {
  if [ -n "$pg_dir" ] && [ -f "$pg_dir/data/postmaster.pid" ]; then
    pg_as_server_user "$pg_bin/pg_ctl" -D "$pg_dir/data" stop -m fast -w >/dev/null 2>&1 || true
  fi
  if [ -n "$pg_dir" ]; then
    rm -rf "$pg_dir"
  fi
  if [ -n "$pg_unavailable" ]; then
    pg_banner "$pg_unavailable"
  fi
}

pg_fail() {
  pg_unavailable=$1
  if [ -n "$pg_dir" ] && [ -f "$pg_dir/server.log" ]; then
    tail -n 20 "$pg_dir/server.log" >&2 || true
  fi
  pg_banner "$pg_unavailable"
  export QALPACK_PG_UNAVAILABLE=$pg_unavailable
  return 1
}

pg_free_port() {
  local port
  for _ in $(seq 1 50); do
    port=$((20000 + RANDOM % 20000))
    if ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
      echo "$port"
      return 0
    fi
  done
  return 1
}

pg_start() {
  pg_bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
  if [ -z "$pg_bin" ] || [ ! -x "$pg_bin/initdb" ]; then
    pg_fail "no PostgreSQL server binaries under /usr/lib/postgresql/<version>/bin"
    return 1
  fi
  if [ "$(id -u)" -eq 0 ]; then
    if id -u postgres >/dev/null 2>&1; then
      pg_user=postgres
    else
      id -u qalpg >/dev/null 2>&1 || useradd --system --no-create-home --shell /usr/sbin/nologin qalpg \
        || { pg_fail "cannot create the unprivileged user qalpg for the server"; return 1; }
      pg_user=qalpg
    fi
  fi
  pg_dir=$(mktemp -d "${TMPDIR:-/tmp}/qalpack-pg.XXXXXX")
  chmod 700 "$pg_dir"
  [ -n "$pg_user" ] && chown "$pg_user" "$pg_dir"

  if ! pg_as_server_user "$pg_bin/initdb" -D "$pg_dir/data" -U qalpack --auth=trust -E UTF8 --locale=C \
      --no-sync >"$pg_dir/initdb.log" 2>&1; then
    cat "$pg_dir/initdb.log" >&2
    pg_fail "initdb failed"
    return 1
  fi
  local port started=
  for _ in 1 2 3; do
    port=$(pg_free_port) || break
    if pg_as_server_user "$pg_bin/pg_ctl" -D "$pg_dir/data" -l "$pg_dir/server.log" -w -t 60 \
        -o "-h 127.0.0.1 -p $port -k $pg_dir -F -c max_connections=50" start >/dev/null 2>&1; then
      started=yes
      break
    fi
  done
  if [ -z "$started" ]; then
    pg_fail "the server did not start (log above)"
    return 1
  fi
  if ! "$pg_bin/createdb" -h 127.0.0.1 -p "$port" -U qalpack "$pg_dbname" >/dev/null 2>&1; then
    pg_fail "cannot create the test database"
    return 1
  fi
  export QALPACK_PG_HOST=127.0.0.1 QALPACK_PG_PORT=$port QALPACK_PG_USER=qalpack QALPACK_PG_DBNAME=$pg_dbname
  # For the tests that restart the server under a running desk:
  #   $QALPACK_PG_CTL -D $QALPACK_PG_DATA restart -m fast -w, run as QALPACK_PG_RUNAS when set;
  # QALPACK_PG_LOG is the server's log.
  export QALPACK_PG_CTL=$pg_bin/pg_ctl QALPACK_PG_DATA=$pg_dir/data QALPACK_PG_LOG=$pg_dir/server.log \
    QALPACK_PG_RUNAS=$pg_user
  echo "PostgreSQL $("$pg_bin/postgres" --version | awk '{print $3}') for the $pg_what on 127.0.0.1:$port"
}
