#!/usr/bin/env bash
# bench/archive-cluster.sh [MESSAGES [MEGABYTES]]: a large store (20,000 messages in 400 MB by default)
# and 500 mails exported to HTML by tasks. The plan: its longest task against the mean of 16, and its
# time without hashing against sha256sum of the inputs. Tasks: two at a time against one at a time, and
# all in one task against the export. The merge against the export. Whole processes, three rounds of
# all in turn, medians of their seconds and of those of their processors (CPU), which other programs
# on the machine disturb less. Needs the release build and openssl.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
messages=${1:-20000}
megabytes=${2:-400}
tarnmail=$root/build/release/tarnmail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# measure NAME COMMAND...: adds the seconds of one run to the file of that name, and those of the CPU.
measure() {
  local name=$1
  local TIMEFORMAT='%R %U %S'
  shift
  { time "$@" >/dev/null 2>&1; } 2>>"$work/$name"
}

# median NAME; cpu NAME
median() { sort -n "$work/$1" | awk '{ all[NR] = $1 } END { print all[int((NR + 1) / 2)] }'; }
cpu() { awk '{ print $2 + $3 }' "$work/$1" | sort -n | awk '{ all[NR] = $1 } END { print all[int((NR + 1) / 2)] }'; }

# compare WHAT NAME OTHER
compare() {
  local of
  for of in median cpu; do
    awk -v what="$1${of#median}" -v one="$($of "$2")" -v other="$($of "$3")" \
      'BEGIN { sub(/cpu$/, ", CPU", what)
               printf "  %-40s %.2f s against %.2f s   ratio %.2f\n", what, one, other, one / other }'
  done
}

# tasks FOLDER FIRST STEP: every STEP-th task from FIRST on.
tasks() {
  local task
  for ((task = $2; task < count; task += $3)); do "$tarnmail" run-task "$work/plan" -o "$1" --task "$task"; done
}
one_at_a_time() { tasks "$work/one" 0 1; }
two_at_a_time() {
  tasks "$work/two" 0 2 &
  tasks "$work/two" 1 2
  wait
}

mkdir "$work/in"
"$root/build/release/bench/MakeStore" "$work/in/large.pst" "$messages" "$megabytes"
for ((mail = 0; mail < 500; ++mail)); do
  { printf 'From: ann@example.com\nSubject: Mail %s\nDate: Wed, 1 May 2024 10:34:56 +0000\n\n' "$mail"
    head -c $((mail * 97 % 9000)) /dev/zero | tr '\0' 'x'
    echo; } >"$work/in/$mail.eml"
done
printf '%s messages, %s bytes, and 500 mails\n' "$messages" "$(stat -c %s "$work/in/large.pst")"
for _ in 1 2 3; do
  rm -rf "$work"/{one,two,whole,single,sums}
  measure plan "$tarnmail" plan "$work/in" -o "$work/plan" --target-cost 1 --max-tasks 16 --no-catalogue
  measure hashing bash -c 'find "$1" -type f -exec openssl dgst -sha256 {} +' hashing "$work/in"
  measure sums bash -c 'find "$1" -type f -exec sha256sum {} +' sums "$work/in"
  count=$(head -n 1 "$work/plan" | sed 's/.*"tasks":\([0-9]*\).*/\1/')
  measure one one_at_a_time
  measure two two_at_a_time
  "$tarnmail" plan "$work/in" -o "$work/whole-plan" --target-cost 1 --max-tasks 1 --no-catalogue 2>/dev/null
  measure whole "$tarnmail" run-task "$work/whole-plan" -o "$work/whole" --task 0
  measure single "$tarnmail" export "$work/in" -o "$work/single" --no-catalogue -j 1
  measure merge "$tarnmail" merge "$work/plan" "$work/two"
done
sed -n 's/^{"type":"task","task":[0-9]*,"cost":\([0-9]*\),.*/\1/p' "$work/plan" |
  awk '{ sum += $1; if ($1 > most) most = $1 }
    END { printf "  %-40s %d tasks   ratio %.2f\n", "longest task / mean", NR, most * NR / sum }'
awk -v plan="$(cpu plan)" -v hashing="$(cpu hashing)" -v sums="$(cpu sums)" \
  'BEGIN { printf "  %-40s %.2f s against %.2f s   ratio %.2f\n", "plan without hashing / sha256sum, CPU",
           plan - hashing, sums, (plan - hashing) / sums }'
compare 'tasks one at a time / two' one two
compare 'one task of all / export' whole single
compare 'merge / export' merge single
