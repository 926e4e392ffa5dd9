#!/usr/bin/env bash
# bench/archive-cluster.sh [MESSAGES [MEGABYTES]]: a large store (20,000 messages in 400 MB by default)
# and 500 mails exported to HTML by tasks. The plan: its longest task against the mean of 16, and its
# time without hashing against sha256sum of the inputs. Tasks: two at a time against one at a time, and
# all in one task against the export. The merge against the export, both without a catalogue and with
# one. Whole processes, three rounds of all in turn, medians of their seconds and of those of their
# processors (CPU), which other programs on the machine disturb less. Needs the release build and
# openssl. Where a command fails, it tells what that has said, and ends with 1.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
messages=${1:-20000}
megabytes=${2:-400}
tarnmail=$root/build/release/tarnmail
work=$(mktemp -d)
times=$work/times
trap 'rm -rf "$work"' EXIT

# measure NAME COMMAND...: adds the seconds of one run to the times of that name, and those of the CPU.
measure() {
  local name=$1
  local TIMEFORMAT='%R %U %S'
  shift
  { time "$@" >"$work/said" 2>&1; } 2>>"$times/$name" && return
  printf '%s ends with %s, and has said:\n' "$name" $? >&2
  tail -n 20 "$work/said" >&2
  exit 1
}

# middle NAME COLUMNS: the median of the sums of these columns.
middle() {
  awk -v columns="$2" '{ split(columns, wanted, ","); sum = 0
                         for (at in wanted) sum += $wanted[at]
                         print sum }' "$times/$1" |
    sort -n | awk '{ all[NR] = $1 } END { print all[int((NR + 1) / 2)] }'
}
seconds() { middle "$1" 1; }
cpu() { middle "$1" 2,3; }

# ratio WHAT ONE OTHER
ratio() {
  awk -v what="$1" -v one="$2" -v other="$3" \
    'BEGIN { printf "  %-44s %.2f s against %.2f s   ratio %.2f\n", what, one, other, one / other }'
}

# compare WHAT NAME OTHER
compare() {
  ratio "$1" "$(seconds "$2")" "$(seconds "$3")"
  ratio "$1, CPU" "$(cpu "$2")" "$(cpu "$3")"
}

# tasks PLAN FOLDER FIRST STEP: every STEP-th task from FIRST on.
tasks() {
  local task
  for ((task = $3; task < count; task += $4)); do
    "$tarnmail" run-task "$1" -o "$2" --task "$task" || return
  done
}
one_at_a_time() { tasks "$work/plan" "$work/one" 0 1; }
# two_at_a_time PLAN FOLDER
two_at_a_time() {
  tasks "$1" "$2" 0 2 &
  local first=$!
  tasks "$1" "$2" 1 2 && wait "$first"
}

mkdir "$times"
mkdir "$work/in"
"$root/build/release/bench/MakeStore" "$work/in/large.pst" "$messages" "$megabytes"
for ((mail = 0; mail < 500; ++mail)); do
  { printf 'From: ann@example.com\nSubject: Mail %s\nDate: Wed, 1 May 2024 10:34:56 +0000\n\n' "$mail"
    head -c $((mail * 97 % 9000)) /dev/zero | tr '\0' 'x'
    echo; } >"$work/in/$mail.eml"
done
printf '%s messages, %s bytes, and 500 mails\n' "$messages" "$(stat -c %s "$work/in/large.pst")"
for _ in 1 2 3; do
  rm -rf "$work"/{one,two,whole,single,shown,known}
  measure plan "$tarnmail" plan "$work/in" -o "$work/plan" --target-cost 1 --max-tasks 16 --no-catalogue
  measure hashing find "$work/in" -type f -exec openssl dgst -sha256 {} +
  measure sums find "$work/in" -type f -exec sha256sum {} +
  count=$(head -n 1 "$work/plan" | sed 's/.*"tasks":\([0-9]*\).*/\1/')
  measure one one_at_a_time
  measure two two_at_a_time "$work/plan" "$work/two"
  measure planWhole "$tarnmail" plan "$work/in" -o "$work/whole-plan" --target-cost 1 --max-tasks 1 --no-catalogue
  measure whole "$tarnmail" run-task "$work/whole-plan" -o "$work/whole" --task 0
  measure single "$tarnmail" export "$work/in" -o "$work/single" --no-catalogue -j 1
  measure merge "$tarnmail" merge "$work/plan" "$work/two"
  measure planShown "$tarnmail" plan "$work/in" -o "$work/shown-plan" --target-cost 1 --max-tasks 16
  measure shown two_at_a_time "$work/shown-plan" "$work/shown"
  measure known "$tarnmail" export "$work/in" -o "$work/known" -j 1
  measure mergeShown "$tarnmail" merge "$work/shown-plan" "$work/shown"
done
sed -n 's/^{"type":"task","task":[0-9]*,"cost":\([0-9]*\),.*/\1/p' "$work/plan" |
  awk '{ sum += $1; if ($1 > most) most = $1 }
    END { printf "  %-44s %d tasks   ratio %.2f\n", "longest task / mean", NR, most * NR / sum }'
awk -v plan="$(cpu plan)" -v hashing="$(cpu hashing)" -v sums="$(cpu sums)" \
  'BEGIN { printf "  %-44s %.2f s against %.2f s   ratio %.2f\n", "plan without hashing / sha256sum, CPU",
           plan - hashing, sums, (plan - hashing) / sums }'
compare 'tasks one at a time / two' one two
compare 'one task of all / export' whole single
compare 'merge / export' merge single
compare 'merge / export, with a catalogue' mergeShown known
