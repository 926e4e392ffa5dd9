#!/usr/bin/env bash
# scripts/test-cluster.sh [TEST...]: exports by tarnmail-slurm on a real Slurm, which is of this machine
# alone: one controller and two nodes on private ports and folders. Nodes, programs and the controller
# are killed in the middle, a disk is full, an input changes; each time the export must be that of one
# machine. TEST is one of tests/cluster/cluster_test.py, as ClusterTest.test_program_is_killed.
#
# Installs and builds what is missing. Works as root without an init system and without control groups,
# and as an ordinary user; all that it starts is ended by its process id.
#
# Ends with one line, "cluster: ..."; exit status 0 when all is well.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"

fail() { echo "cluster: FAILED: $*"; exit 1; }

install_packages "${TARN_PACKAGES[@]}" "${TARN_CLUSTER_PACKAGES[@]}" || fail "packages are missing"
# The daemons of an ordinary user are in places for those of root.
PATH=$PATH:/usr/sbin:/sbin
build_preset release tarnmail tarnmail-archive MakeStore || fail "it does not build"
use_fast_temp_directory
build=$root/build/release
log=$(mktemp)
trap 'rm -f "$log"' EXIT
python3 -B "$root/tests/cluster/cluster_test.py" "$build/tarnmail" "$build/tarnmail-slurm" \
  "$build/bench/MakeStore" "$@" >"$log" 2>&1 || { cat "$log" >&2; fail "see above"; }
echo "cluster: ok: $(sed -n 's/^Ran \([0-9]*\) .*/\1/p' "$log") exports"
