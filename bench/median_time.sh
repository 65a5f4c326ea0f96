# Shared by the benchmark scripts (sourced, not run).
# median_time CMD...: one untimed warm-up pass, then $runs timed passes; sets
# $med to the median wall time in seconds. A failing command ends the script.
median_time() {
  local i s e times=()
  "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; exit 1; }
  for ((i = 0; i < runs; i++)); do
    s=$(date +%s.%N)
    "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; exit 1; }
    e=$(date +%s.%N)
    times+=("$(awk -v s="$s" -v e="$e" 'BEGIN { printf "%.4f", e - s }')")
  done
  med=$(printf '%s\n' "${times[@]}" | sort -g |
    awk '{ t[NR] = $1 } END { print (NR % 2) ? t[(NR + 1) / 2] : (t[NR / 2] + t[NR / 2 + 1]) / 2 }')
}
