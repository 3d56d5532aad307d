# What the benches have in common; sourced. A cell is one command on one input; its times are taken
# in turn with those of the others, so that a slow minute of the machine meets all of them.
# shellcheck shell=bash disable=SC2034,SC2154  # variables of the bench that sources this

# measured CELL COMMAND...: one run; its seconds and its private memory in KB go to CELL.times. What
# was written before is on the disk by then: nobody's sync waits for bytes of another. Settings of
# one call: expected_status; measure_options, those of bench/measure.cpp. 124 when the run took
# longer than the limit given there; every other failure ends the bench.
measured() {
  local cell=$1 status=0
  shift
  sync -f . || exit 1
  # shellcheck disable=SC2086  # options are words
  measure ${measure_options-} result "$@" >/dev/null 2>measured.errors || status=$?
  [ "$status" -ne 124 ] || return 124
  [ "$status" -eq "${expected_status:-0}" ] || {
    echo "failed: $*" >&2
    cat measured.errors >&2
    exit 1
  }
  cat result >>"$cell.times" || exit 1
}
median() { cut -d' ' -f1 "$1.times" | sort -n | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }
peak_mb() { cut -d' ' -f2 "$1.times" | sort -n | tail -n 1 | awk '{printf "%.1f", $1 / 1024}'; }
ratio() { awk -v a="$(median "$1")" -v b="$(median "$2")" 'BEGIN {printf "%.2f", a / b}'; }

# take_options ARGUMENT...: "--peers-up-to N" sets peers_up_to=N; $options names those that there are.
take_options() {
  local name
  while [ $# -gt 0 ]; do
    name=${1#--} && name=${name//-/_}
    [[ $1 == --* && " $options " == *" $name "* && $# -ge 2 ]] || {
      echo "unknown option or no value: $1" >&2
      exit 1
    }
    printf -v "$name" %s "$2"
    shift 2
  done
}

build_bench() {
  scripts/setup.sh "${build_packages[@]}" "${bench_packages[@]}"
  cmake --preset release -DORX_BUILD_BENCH=ON >/dev/null
  cmake --build --preset release -- --quiet
  PATH="$PWD/build/bin:$PATH"
}

# use_results DIRECTORY: where the results go; made when it is missing.
use_results() {
  mkdir -p "$1"
  results=$(realpath "$1")
}

# A scratch directory in $BENCH_DIR, on the disk that is to be measured, removed at the end.
enter_scratch() {
  work=$(realpath "$(mktemp -d "${BENCH_DIR:-$PWD/build}/bench.XXXXXX")")
  trap 'rm -rf "$work"' EXIT
  cd "$work" || exit
}

# sample_lines RECORDS SEED ORDER: about 1.15 records an object, cut to exactly the wanted number.
sample_lines() { orxkdb sample --objects "$1" --seed "$2" --order "$3" | awk -v n="$1" 'NR <= n'; }

# with_wrong_counts FILE: a backup with every use count changed, so that a rebuild writes all models.
with_wrong_counts() { sed 's/<17;0;1;[0-9]/<17;0;1;7/' "$1"; }

# Results. A bench keeps its cells one by one and writes them as one JSON document at its end.

# json_fields NAME VALUE...: members of an object; what is no number is a text.
json_fields() {
  local separator=
  while [ $# -gt 0 ]; do
    if [[ $2 =~ ^(0|[1-9][0-9]*)(\.[0-9]+)?$ ]]; then
      printf '%s"%s": %s' "$separator" "$1" "$2"
    else
      printf '%s"%s": "%s"' "$separator" "$1" "${2//\"/\\\"}"
    fi
    separator=', '
    shift 2
  done
}

# keep_ratio CELL PEER RATIO GOAL TOLD
keep_ratio() {
  json_fields cell "$1" peer "$2" ratio "$3" goal "$4" told "$5" >>"$work/ratios"
  echo >>"$work/ratios"
}

# keep_cell CELL NAME VALUE...: every run of the cell, and what tells it from others. A cell without
# any run that came to its end has empty lists and no median.
keep_cell() {
  local cell=$1
  shift
  touch "$cell.times"
  {
    json_fields "$@"
    [ ! -s "$cell.times" ] || printf ', "median": %s' "$(median "$cell")"
    awk '{ seconds = seconds separator $1; memory = memory separator $2; separator = ", " }
      END { printf ", \"seconds\": [%s], \"private_kb\": [%s]\n", seconds, memory }' "$cell.times"
  } >>"$work/cells"
}

machine_facts() {
  json_fields processors "$(nproc)" \
    processor "$(sed -n 's/^model name[^:]*: *//p' /proc/cpuinfo | head -n 1)" \
    memory_mb "$(awk '/^MemTotal:/ { print int($2 / 1024) }' /proc/meminfo)" \
    kernel "$(uname -sr)" file_system "$(df --output=fstype . | tail -n 1)" date "$(date -u +%F)"
}

# write_results FILE NAME VALUE...: the kept cells, with what is true of all of them.
write_results() {
  local file=$1
  shift
  {
    echo "{"
    echo "  $(json_fields "$@"),"
    echo "  \"machine\": {$(machine_facts)},"
    [ ! -s "$work/ratios" ] || {
      echo "  \"ratios\": ["
      sed 's/.*/    {&},/; $s/,$//' "$work/ratios"
      echo "  ],"
    }
    echo "  \"cells\": ["
    sed 's/.*/    {&},/; $s/,$//' "$work/cells"
    echo "  ]"
    echo "}"
  } >"$file"
}
