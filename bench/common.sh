# What the benches have in common; sourced. A cell is one command on one input; its times are taken
# in turn with those of the others, so that a slow minute of the machine meets all of them.

# measured CELL COMMAND...: one run; its seconds and its private memory in KB go to CELL.times.
measured() {
  local cell=$1
  shift
  measure result "$@" >/dev/null 2>measured.errors || [ $? -eq "${expected_status:-0}" ] || {
    echo "failed: $*" >&2
    cat measured.errors >&2
    exit 1
  }
  cat result >>"$cell.times"
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
  cmake --preset release -DORX_BUILD_BENCH=ON >/dev/null
  cmake --build --preset release -- --quiet
  PATH="$PWD/build/bin:$PATH"
}

# A scratch directory on the disk that is to be measured, removed at the end.
enter_scratch() {
  work=$(mktemp -d "${BENCH_DIR:-$PWD/build}/bench.XXXXXX")
  trap 'rm -rf "$work"' EXIT
  cd "$work"
}

# sample_lines RECORDS SEED ORDER: about 1.15 records an object, cut to exactly the wanted number.
sample_lines() { orxkdb sample --objects "$1" --seed "$2" --order "$3" | awk -v n="$1" 'NR <= n'; }
