#!/usr/bin/env bash
# Runs every suite of ovosystem on a Debian 12 machine, installing what is missing first:
#   linux   the test suite (with a PC/SC service and a virtual card), the ovo tool and
#           the benchmarks built
#   docs    the API reference by Doxygen, where any warning (an undocumented public name
#           among them) fails the suite
#   python  the Python package, installed by pip into a scratch environment, its pytest
#           suite against the linux build's library (the virtual card, a pseudo-terminal,
#           processes on a channel)
#   abi     the exported interface of the linux build's library against the baseline in
#           abi/ (scripts/abi.sh): no incompatible change without a new SONAME
#   package the Debian packages of the linux build (lintian, unpacked into a scratch root, the
#           API reference in the -dev package, a client and every example built against it
#           and run)
#   asan    the test suite under AddressSanitizer and UndefinedBehaviorSanitizer
#   tsan    the test suite under ThreadSanitizer
#   win64   the Windows 64-bit build, its test suite under Wine (its ZIP package among
#           them, run on a clean Wine prefix with a C client of the MinGW-w64 C compiler
#           and one of the MSVC ABI) and the ovo tool under Wine
#   parity  the parity scenarios of the linux and win64 builds, run natively and under
#           Wine, their outputs compared (tests/parity/known_differences.txt lists the
#           differences kept); the Wine outputs refresh their record in tests/parity/windows/,
#           against which the linux suite compares the native outputs
#   win32   the Windows 32-bit build, compiled and linked, and its ZIP package
#   fuzz    every libFuzzer target for a short run (OVO_FUZZ_SECONDS each, default 10)
#   bench   every benchmark, briefly: one run of each (figures and ratios only, no verdict)
# and one suite that runs only when named:
#   bench-full  every benchmark in full (9 repetitions of 0.2 s, randomly interleaved), then
#           one table of every ratio of medians against its target, met or missed, also
#           written to build/bench-full.json; it fails when a target is missed
# Give suite names as arguments to run only those. Builds go to build/<suite>. The last line
# counts the tests that passed, failed and skipped; OVO_NO_CARD_SERVICE=1 lets the cases
# that need the PC/SC service skip when it cannot be started (they fail otherwise).
set -uo pipefail
source "$(dirname "$0")/lib/debian.sh"

root=$ovoRoot
builds=${OVO_BUILD_ROOT:-$root/build}
jobs=${OVO_JOBS:-$(nproc)}
fuzzSeconds=${OVO_FUZZ_SECONDS:-10}
suites=("$@")
# By default the suites of the linux tree alone run first, while the next trees build; the
# benchmarks last, when every build is done.
[ ${#suites[@]} -gt 0 ] || suites=(linux docs python abi package asan tsan win64 parity win32 fuzz bench)

packages=(cmake ninja-build g++ pkg-config util-linux googletest libgtest-dev libbenchmark-dev libspdlog-dev libboost-dev
          clang libclang-rt-14-dev g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix wine64
          libpcsclite-dev pcscd pcsc-tools vsmartcard-vpcd vsmartcard-vpicc python3-pycryptodome
          doxygen dpkg-dev file lintian socat groff-base ccache python3-pytest python3-venv python3-pip abigail-tools lld llvm)

log() { printf '\n=== %s\n' "$*"; }

passed=0
failed=0
skipped=0
broken=()

# Adds the counts of a CTest run to the totals: its summary line, which counts a skipped test
# as passed, and the skipped ones that it lists apart.
count() {
    local summary
    summary=$(grep -E 'tests passed, [0-9]+ tests? failed out of [0-9]+' "$1" | tail -1)
    if [ -z "$summary" ]; then
        return 1
    fi
    local failedHere total skippedHere
    failedHere=$(sed -E 's/.* ([0-9]+) tests? failed out of ([0-9]+).*/\1/' <<<"$summary")
    total=$(sed -E 's/.* failed out of ([0-9]+).*/\1/' <<<"$summary")
    skippedHere=$(grep -cE '^[[:space:]]*[0-9]+ - .* \(Skipped\)$' "$1")
    passed=$((passed + total - failedHere - skippedHere))
    failed=$((failed + failedHere))
    skipped=$((skipped + skippedHere))
}

# Runs one check that is no CTest suite and counts it as one test.
check() {
    if "$@"; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        return 1
    fi
}

# Every build compiles through ccache: a second run on the machine rebuilds from its cache.
# Paths under the sources are hashed relative to them, so clones in other places share it. Its
# depend mode keys a unit by the headers the compiler reports reading, which spares the extra
# run of the preprocessor that a miss costs otherwise.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1 CCACHE_DEPEND=1
launchers=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
# A warm build is mostly links (some seventy programs each): LLVM's linker does them in
# about half the time, and a tenth of the time of MinGW-w64's ld (whose gcc ignores
# -fuse-ld: scripts/mingw_lld/ holds its link step, which runs lld).
mingwLinker=()
for kind in EXE SHARED MODULE; do
    launchers+=("-DCMAKE_${kind}_LINKER_FLAGS=-fuse-ld=lld")
    mingwLinker+=("-DCMAKE_${kind}_LINKER_FLAGS=-B$root/scripts/mingw_lld/")
done

configureAndBuild() { # suite, cmake arguments...
    local dir=$builds/$1
    shift
    cmake -S "$root" -B "$dir" -G Ninja "${launchers[@]}" "$@" >"$dir.configure.log" 2>&1 ||
        { cat "$dir.configure.log"; return 1; }
    cmake --build "$dir" -j "$jobs"
}

# The trees build one after another in a background job of the idle scheduling class, ahead of
# the suites: the kernel gives it only what the running suite's tests leave of the cores, so
# the next tree compiles while those tests wait on processes, services and Wine, and no test
# runs slower for it. A suite waits for its tree and shows the build's output; a tree that no
# requested suite builds (parity's, say, when run alone) builds when asked for.
builder=
aheadOf=()
buildAhead() { # suite...
    aheadOf=()
    local suite
    for suite; do
        declare -F "build_$suite" >/dev/null && aheadOf+=("$suite") && rm -f "$builds/$suite.built"
    done
    [ ${#aheadOf[@]} -gt 0 ] || return 0
    set -m # its own process group, which stopBuilder ends with everything it started
    (
        chrt --idle -p 0 $BASHPID >/dev/null
        for suite in "${aheadOf[@]}"; do
            "build_$suite" >"$builds/$suite.build.log" 2>&1
            echo $? >"$builds/$suite.built"
        done
    ) &
    builder=$!
    set +m
}
stopBuilder() { [ -z "$builder" ] || kill -- -"$builder" 2>/dev/null; }
isAhead() { [[ " ${aheadOf[*]} " == *" $1 "* ]]; }

built() { # suite: its tree, from the builder or built now
    local suite=$1
    if ! isAhead "$suite"; then
        "build_$suite"
        return
    fi
    while [ ! -e "$builds/$suite.built" ] && kill -0 "$builder" 2>/dev/null; do
        sleep 0.5
    done
    cat "$builds/$suite.build.log"
    [ "$(cat "$builds/$suite.built" 2>/dev/null)" = 0 ]
}

runTests() { # suite (the Python package's tests have a suite of their own)
    local dir=$builds/$1
    (cd "$dir" && ctest -j "$jobs" --output-on-failure --timeout 600 -LE python) 2>&1 | tee "$dir.ctest.log"
    local status=${PIPESTATUS[0]}
    count "$dir.ctest.log" || status=1
    return "$status"
}

# The linux build is also the one packaged: installed under /usr, with the API reference.
linuxOptions=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DOVO_BUILD_BENCHMARKS=ON -DCMAKE_INSTALL_PREFIX=/usr
              -DOVO_INSTALL_REFERENCE=ON)

build_linux() { configureAndBuild linux "${linuxOptions[@]}"; }
suite_linux() { built linux && runTests linux; }

suite_docs() {
    local dir=$builds/docs
    cmake -S "$root" -B "$dir" -G Ninja -DOVO_BUILD_TESTS=OFF -DOVO_BUILD_TOOLS=OFF >"$dir.configure.log" 2>&1 ||
        { cat "$dir.configure.log"; return 1; }
    if cmake --build "$dir" --target docs; then
        echo "API reference: $dir/docs/html/index.html"
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        return 1
    fi
}

# The sanitizer builds compile with clang: a third less time than GCC's under AddressSanitizer,
# a fifth less under ThreadSanitizer.
clang=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++)

build_asan() {
    configureAndBuild asan "${clang[@]}" -DCMAKE_BUILD_TYPE=Debug -DOVO_SANITIZE=address,undefined -DOVO_BUILD_TOOLS=OFF
}
suite_asan() {
    export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
    built asan && runTests asan
}

build_tsan() { configureAndBuild tsan "${clang[@]}" -DCMAKE_BUILD_TYPE=Debug -DOVO_SANITIZE=thread -DOVO_BUILD_TOOLS=OFF; }
suite_tsan() {
    export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
    built tsan && runTests tsan
}

build_win64() {
    configureAndBuild win64 -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchains/mingw-w64-x86_64.cmake" "${mingwLinker[@]}"
}
suite_win64() {
    built win64 || return 1
    runTests win64
    local status=$?
    check "$root/tests/tools/wine_tool_check.sh" "$builds/win64" || status=1
    WINEPREFIX=$builds/win64/wineprefix /usr/lib/wine/wineserver64 -k 2>/dev/null
    return $status
}

suite_parity() {
    [ -x "$builds/linux/bin/parity_registry" ] || suite_linux || return 1
    [ -f "$builds/win64/bin/parity_registry.exe" ] || suite_win64 || return 1
    check "$root/tests/parity/compare.sh" "$builds/linux" "$builds/win64"
    local status=$?
    WINEPREFIX=$builds/win64/wineprefix /usr/lib/wine/wineserver64 -k 2>/dev/null
    return $status
}

build_win32() {
    configureAndBuild win32 -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchains/mingw-w64-i686.cmake" "${mingwLinker[@]}"
}
suite_win32() {
    built win32 && (cd "$builds/win32" && cpack -G ZIP >cpack.log 2>&1 || { cat cpack.log; exit 1; }) &&
        ls "$builds"/win32/packages/*.zip
}

# Targets of the linux build alone, for the suites that only need them.
linuxTargets() { # target...
    if isAhead linux; then
        built linux >/dev/null || return 1
    fi
    [ -f "$builds/linux/build.ninja" ] ||
        cmake -S "$root" -B "$builds/linux" -G Ninja "${launchers[@]}" "${linuxOptions[@]}" >"$builds/linux.configure.log" ||
        return 1
    cmake --build "$builds/linux" -j "$jobs" --target "$@"
}

# Adds the counts of pytest's closing line ("== 3 failed, 40 passed, 1 skipped in 9.50s ==").
countPytest() {
    local summary number word
    summary=$(grep -E '^=+ .* in [0-9.]+s' "$1" | tail -1)
    [ -n "$summary" ] || return 1
    while read -r number word; do
        case $word in
        passed) passed=$((passed + number)) ;;
        failed | error | errors) failed=$((failed + number)) ;;
        esac
    done < <(grep -oE '[0-9]+ [a-z]+' <<<"$summary")
}

suite_python() {
    local dir=$builds/python
    linuxTargets ovosystem || return 1
    rm -rf "$dir" && /usr/bin/python3 -m venv --system-site-packages "$dir/venv" || return 1
    # Offline: no build isolation, the distribution's setuptools builds the package (from a
    # copy, since the build writes beside the sources).
    cp -r "$root/python" "$dir/source" &&
        "$dir/venv/bin/pip" install --quiet --no-index --no-build-isolation "$dir/source" || return 1
    (cd "$dir" && OVOSYSTEM_LIBRARY=$builds/linux/src/libovosystem.so.0 \
        "$dir/venv/bin/python" -m pytest -p no:cacheprovider -v "$root/python/tests") 2>&1 | tee "$dir.log"
    local status=${PIPESTATUS[0]}
    countPytest "$dir.log" || status=1
    return "$status"
}

suite_abi() {
    linuxTargets ovosystem && check "$root/scripts/abi.sh" check "$builds/linux/src/libovosystem.so"
}

suite_package() {
    local dir=$builds/linux
    linuxTargets all || return 1
    rm -rf "$dir/packages"
    (cd "$dir" && cpack -G DEB >cpack.log 2>&1) || { cat "$dir/cpack.log"; return 1; }
    ls "$dir"/packages/*.deb
    check "$root/tests/install/check_debian_packages.sh" "$dir/packages" "$builds/package"
}

build_fuzz() {
    configureAndBuild fuzz "${clang[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOVO_BUILD_FUZZERS=ON -DOVO_BUILD_TESTS=OFF \
        -DOVO_BUILD_TOOLS=OFF
}
suite_fuzz() {
    built fuzz || return 1
    # The targets run side by side, each for its time.
    local status=0 fuzzer name pids=() names=()
    for fuzzer in "$builds"/fuzz/bin/*_fuzz; do
        name=$(basename "$fuzzer")
        mkdir -p "$builds/fuzz/corpus/$name"
        "$fuzzer" -max_total_time="$fuzzSeconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
            "$builds/fuzz/corpus/$name" >"$builds/fuzz/$name.log" 2>&1 &
        pids+=($!)
        names+=("$name")
    done
    for i in "${!pids[@]}"; do
        name=${names[$i]}
        if wait "${pids[$i]}"; then
            echo "$name: $(grep -E '^stat::number_of_executed_units' "$builds/fuzz/$name.log" | awk '{print $2}') runs, no failure"
            passed=$((passed + 1))
        else
            tail -40 "$builds/fuzz/$name.log"
            failed=$((failed + 1))
            status=1
        fi
    done
    return $status
}

suite_bench() {
    [ -d "$builds/linux/bin" ] || suite_linux || return 1
    for bench in "$builds"/linux/bin/*_bench; do
        log "$(basename "$bench")"
        "$bench" --benchmark_min_time=0.05 --benchmark_repetitions=1 --benchmark_color=false || return 1
    done
}

# Benchmarks are no tests: this suite adds nothing to the counts of the last line. Each
# program appends its comparisons, judged, to one file of JSON lines; the table is made
# from those.
suite_bench-full() {
    linuxTargets benchmarks || return 1
    local lines=$builds/bench-full.jsonl status=0 started loadBefore
    started=$(date -u +%FT%TZ)
    loadBefore=$(cut -d' ' -f1-3 /proc/loadavg)
    rm -f "$lines"
    for bench in "$builds"/linux/bin/*_bench; do
        log "$(basename "$bench")"
        "$bench" --benchmark_repetitions=9 --benchmark_min_time=0.2 --benchmark_enable_random_interleaving=true \
            --benchmark_color=false --comparisons_json="$lines" || { echo "$(basename "$bench") failed"; status=1; }
    done
    log "bench-full: ours / reference, medians of 9 runs of 0.2 s (load average $loadBefore before)"
    /usr/bin/python3 "$root/scripts/lib/bench_table.py" "$lines" "$builds/bench-full.json" "started=$started" \
        "load_average_before=$loadBefore" "load_average_after=$(cut -d' ' -f1-3 /proc/loadavg)" || status=1
    return $status
}

# The PC/SC service with the virtual reader driver, on loopback, for the smart-card tests
# (the tests start and stop the virtual card themselves). Started here unless one runs
# already, and stopped when the script ends. It is part of the suites: without it their
# card cases fail, unless OVO_NO_CARD_SERVICE=1 lets them skip.
startPcscd() {
    local without="fail; OVO_NO_CARD_SERVICE=1 lets them skip"
    if [ "${OVO_NO_CARD_SERVICE:-}" = 1 ]; then without=skip; else export OVO_REQUIRE_CARD_SERVICE=1; fi
    ovoStartPcscd "$builds/pcscd.log" ||
        echo "pcscd shows no virtual reader (see $builds/pcscd.log): the card cases $without"
}
trap 'stopBuilder; ovoStopPcscd' EXIT

ovoInstallMissing "${packages[@]}" || { echo "could not install the packages the suites need"; exit 1; }
mkdir -p "$builds"
buildAhead "${suites[@]}"
startPcscd
start=$SECONDS
for suite in "${suites[@]}"; do
    if ! declare -F "suite_$suite" >/dev/null; then
        echo "unknown suite '$suite'"
        exit 2
    fi
    log "$suite"
    began=$SECONDS
    if ! "suite_$suite"; then
        broken+=("$suite")
    fi
    echo "--- $suite: $((SECONDS - began)) s"
done

log "suites run: ${suites[*]} in $((SECONDS - start)) s"
if [ ${#broken[@]} -gt 0 ]; then
    echo "suites that failed: ${broken[*]}"
    [ "$failed" -gt 0 ] || failed=${#broken[@]}
fi
allowed=
[ "${OVO_NO_CARD_SERVICE:-}" != 1 ] || allowed=" (OVO_NO_CARD_SERVICE=1: the card service's cases may skip)"
echo "ovosystem: $passed passed, $failed failed, $skipped skipped$allowed"
[ ${#broken[@]} -eq 0 ]
