# What fuzz/run, fuzz/check and fuzz/coverage share: the targets, how they are built, how one is run.
# Sourced from the project's root, after cmake/steps.sh.

fuzz_targets="reply driver planning address_text frames line"
fuzz_build=build/fuzz

build_fuzz_targets() { # OPTION...
  # shellcheck disable=SC2086 # a list of names
  need_packages $fuzz_packages
  configure "$fuzz_build" -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -g1" -DDOV417_FUZZ=ON -DDOV417_TOOLS=OFF \
    -DDOV417_TESTS=OFF "$@"
  quietly cmake --build "$fuzz_build" --target fuzz_all
}

# fuzz_one TARGET CORPUS OPTION...: new inputs go to CORPUS, findings to fuzz/findings/TARGET.
fuzz_one() {
  local target=$1 corpus=$2
  shift 2
  mkdir -p "$corpus" "fuzz/findings/$target"
  local dictionary=()
  [ -e "fuzz/dictionary/$target" ] && dictionary=("-dict=fuzz/dictionary/$target")
  # Short allocation stacks and a small quarantine: a quarter more executions in the same time. The
  # sanitizer watches the memory, as the fuzzer would do so in a thread: on a busy machine that one was
  # still starting when the first leaks were searched for, and what it had allocated was taken for one.
  ASAN_OPTIONS=malloc_context_size=2:quarantine_size_mb=16:hard_rss_limit_mb=1500 \
    "$fuzz_build/fuzz/fuzz_$target" "${dictionary[@]}" -max_len=800 -timeout=120 -rss_limit_mb=0 \
    -malloc_limit_mb=1500 -artifact_prefix="fuzz/findings/$target/" -print_final_stats=1 "$@" \
    "$corpus" "fuzz/corpus/$target" >"$fuzz_build/$target.log" 2>&1
}
