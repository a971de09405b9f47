#!/usr/bin/env bash
# Counts the instructions of the cases of HabitraCoreBenchmarks on valgrind's simulated processor and holds them against
# the same bounds. With the same compiler the figures are the same in every run on every machine.
#
# usage: instructions.sh PROGRAM [WORD]    only ratios whose figure contains WORD; by default all, which takes a minute
#
# Exit code 1 when a bound is broken, 2 when there is nothing to count.
set -euo pipefail
program=${1:?the path of HabitraCoreBenchmarks}
word=${2:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# count CASE: leaves "instructions days" in a file of that name.
count() {
  local file=$work/${1//\//.}
  local days counted
  days=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect='*runMeasured*' \
    "$program" --once "$1" 2>"$file.log") || { cat "$file.log" >&2 && return 1; }
  counted=$(sed -n 's/.*Collected : \([0-9]*\).*/\1/p' "$file.log")
  echo "$counted $days" >"$file"
}
export -f count
export work program

"$program" --ratios | grep -F -- "$word" >"$work/ratios" || { echo "no figure contains \"$word\"" >&2 && exit 2; }
cut -f 2,3 "$work/ratios" | tr '\t' '\n' | sort -u | xargs -P "$(nproc)" -I {} bash -euc 'count "$1"' - {} || exit 2

broken=0
printf '%-46s %11s %11s %7s %7s\n' 'figure (instructions a day)' ours yardstick ratio bound
while IFS=$'\t' read -r figure ours yardstick bound; do
  awk -v figure="$figure" -v bound="$bound" '
    { perDay[NR] = $1 / $2 }
    END {
      ratio = perDay[1] / perDay[2]
      printf "%-46s %11.2f %11.2f %7.3f %7.3f  %s\n", figure, perDay[1], perDay[2], ratio, bound,
             ratio <= bound ? "holds" : "BROKEN"
      exit ratio > bound
    }' "$work/${ours//\//.}" "$work/${yardstick//\//.}" || broken=1
done <"$work/ratios"
exit $broken
