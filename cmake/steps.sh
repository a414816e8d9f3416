# What ./demo, ./check and their helpers share: install what is missing, say each step, fail with
# the cause. Sourced from a script that stands in the project's root.

set -euo pipefail
export LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive
started=${DOV417_STARTED:-$(date +%s)} # one clock for a script and those that it starts
export DOV417_STARTED=$started

build_packages="g++ cmake ninja-build pkg-config qtbase5-dev libqt5serialport5-dev libcli11-dev
  libcsv-dev nlohmann-json3-dev"
# Of these the graphical panel is made besides; without them it is left out.
panel_packages="libqwt-qt5-dev libqt5opengl5-dev libqt5svg5-dev"

test_packages="clang-format libgtest-dev libgmock-dev libmodbus-dev libqt5serialbus5-dev binutils python3
  clang-14 lld-14 libclang-rt-14-dev python3-pymodbus python3-serial python3-serial-asyncio mbpoll doxygen ser2net python3-jsonschema tmux groff-base"
bench_packages="libbenchmark-dev libmodbus-dev libqt5serialbus5-dev valgrind python3"

arm_packages="g++ cmake ninja-build qtbase5-dev g++-arm-linux-gnueabihf g++-arm-linux-gnueabi
  qemu-user mmdebstrap"
qt_packages="$build_packages $test_packages qt6-base-dev qt6-serialport-dev"
package_packages="dpkg-dev mmdebstrap lintian desktop-file-utils appstream g++-arm-linux-gnueabihf g++-arm-linux-gnueabi
  qemu-user"
analysis_packages="$build_packages $panel_packages clang-14 clang-tidy-14 cppcheck"
fuzz_packages="clang-14 libclang-rt-14-dev g++ cmake ninja-build qtbase5-dev"

say() {
  printf '\n== %s  [%ss]\n' "$*" "$(($(date +%s) - started))"
}

fail() {
  printf '\n%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# Installs those of the named packages that are missing; asks nobody when none is.
need_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "not root and no sudo: install ${missing[*]} by hand"
    as_root=(sudo)
  fi
  say "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update -q >"$log" 2>&1 ||
    fail "apt-get update: $(tail -n 5 "$log")"
  "${as_root[@]}" apt-get install -q -y --no-install-recommends "${missing[@]}" >"$log" 2>&1 ||
    fail "apt-get install: $(tail -n 15 "$log")"
}

# Runs a command quietly; shows the end of what it printed when it fails.
quietly() {
  "$@" >"$log" 2>&1 || {
    tail -n 60 "$log" >&2
    fail "failed: $*"
  }
}

# What must not happen once: a wrong value, a race, a crash, an error that a sanitizer saw. An entry may hold
# tests of Python, of which the second name is.
never_again='Sanitizer|runtime error:|\*\*\*(Exception|Timeout|Not Run)|#[0-9]+: [^ ]*(late|liar|threads|soak)'
failed_in_python='^(FAIL|ERROR): '
never_again+="|$failed_in_python.*([Ll]ate|liar)"

# FOLDER CTEST-OPTION...: says how many passed, or shows those that did not. Tests that play a serial
# line have the time-outs of a line, which a machine that compiles besides may miss. So a few that fail
# are run again by themselves, and named, with what they said, also if they pass then.
run_tests() {
  local failures="$1/Testing/Temporary/LastTestsFailed.log"
  rm -f "$failures"
  # Three for each processor: those that play a serial line spend their time waiting.
  ctest --test-dir "$@" --output-on-failure -j $((3 * $(nproc))) >"$log" 2>&1 || {
    grep -vE ' Passed |^ *Start |^\[( RUN| +OK|---)' "$log" >"$log.failed"
    cat "$log.failed" >&2
    if [ ! -s "$failures" ] || [ "$(wc -l <"$failures")" -gt 3 ] ||
      [ "$(grep -cE "$failed_in_python" "$log.failed")" -gt 3 ] || grep -qE "$never_again" "$log.failed"; then
      fail "tests failed in $1"
    fi
    ctest --test-dir "$1" --rerun-failed --output-on-failure >"$log.again" 2>&1 || {
      cat "$log.again" >&2
      fail "tests failed in $1, by themselves too"
    }
    echo "Passed by themselves only: $(cut -d: -f2 "$failures" | paste -sd' ')"
  }
  grep 'tests passed' "$log"
}

# Two steps, which may run beside each other, build the same for ARM: the second waits for the first.
hold_arm() {
  mkdir -p build
  exec 9>build/arm.lock
  flock 9
}

configure() { # FOLDER OPTION...
  local folder=$1
  shift
  quietly cmake -S . -B "$folder" -G Ninja "$@"
}

log=$(mktemp)
trap 'rm -f "$log" "$log".*' EXIT
