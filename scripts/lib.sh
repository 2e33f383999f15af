# Shared by the other scripts: bring a Debian 12 machine to the point where the tree builds.
# Sourced, with the working directory anywhere. Everything printed here goes to stderr.

set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export PATH="${PATH:-/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin}"

# What a build needs, and what the tests need on top.
BUILD_PACKAGES=(g++ cmake ninja-build pkg-config ccache qtbase5-dev qttools5-dev-tools libproj-dev proj-data libgdal-dev libeigen3-dev)
TEST_PACKAGES=(binutils dpkg-dev doxygen fonts-dejavu-core libbenchmark-dev libsqlite3-dev mold parallel proj-bin valgrind xvfb)
PYTHON_PACKAGES=(pybind11-dev python3-dev python3-numpy)
QT6_PACKAGES=(qt6-base-dev qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools qt6-5compat-dev)
PACKAGE_PACKAGES=(abigail-tools lintian g++-mingw-w64-x86-64)
FUZZ_PACKAGES=(clang clang-tidy libclang-rt-14-dev)

say() { printf '%s\n' "$*" >&2; }

die() {
    say "error: $*"
    exit 1
}

missing_packages() {
    local installed package
    installed=$(dpkg-query -W -f='${db:Status-Status} ${binary:Package}\n' "$@" 2>/dev/null |
        sed -n 's/^installed \([^:]*\).*/\1/p') || true
    for package in "$@"; do
        grep -Fqx -- "$package" <<<"$installed" || printf '%s\n' "$package"
    done
}

# Installs the packages that are not there yet; asks apt nothing when all are.
ensure_packages() {
    local missing as_root=()
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -eq 0 ] && return 0
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            die "these packages are missing and there is no sudo to install them: ${missing[*]}"
        as_root=(sudo)
    fi
    say "installing: ${missing[*]}"
    local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
        apt-get -y -q -o DPkg::Lock::Timeout=300)
    # The lists of a fresh machine are empty and those of an old one stale: refresh them only when that shows.
    if ! "${apt[@]}" install --no-install-recommends "${missing[@]}" </dev/null >&2; then
        say "refreshing the package lists"
        "${apt[@]}" update </dev/null >&2
        "${apt[@]}" install --no-install-recommends "${missing[@]}" </dev/null >&2
    fi
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -eq 0 ] || die "still missing after installation: ${missing[*]}"
}

# configure PRESET [-DNAME=VALUE…]: a build directory of a tree that has since moved is made anew.
configure() {
    local preset=$1
    shift
    local cache="$ROOT/build/$preset/CMakeCache.txt"
    if [ -f "$cache" ] && ! grep -Fqx "CMAKE_HOME_DIRECTORY:INTERNAL=$ROOT" "$cache"; then
        rm -rf "$ROOT/build/$preset"
    fi
    (cd "$ROOT" && cmake --preset "$preset" "$@") </dev/null
}

# For the scripts that test.

JOBS=$(nproc)
# mold links the forty programs of a build in the time that the usual linker takes for one under the sanitizers.
LINKER=(-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=mold -DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=mold)

# The tests choose their own data; what the caller's shell points at must not decide them.
forget_environment() {
    unset PROJ_LIB PROJ_DATA PROJ_NETWORK GDAL_DATA NIVORA_DATA NIVORA_TEST_STEP QT_LOGGING_RULES PYTHONPATH
}

# step TITLE COMMAND…: quiet unless it fails, then all of its output.
step() {
    local title=$1 log="$ROOT/build/step.log" status=0 TIMEFORMAT="$1: %0R s, %0U s of a processor"
    shift
    time "$@" </dev/null >"$log" 2>&1 || status=$?
    if [ "$status" -ne 0 ]; then
        cat "$log"
        die "$title failed ($status)"
    fi
}

# tests TITLE PRESET [ARGUMENT OF CTEST…]
tests() {
    local title=$1 preset=$2 status=0
    shift 2
    printf '\n== %s\n' "$title"
    (cd "$ROOT" && ctest --preset "$preset" --no-tests=error -j "$JOBS" "$@") </dev/null || status=$?
    [ "$status" -eq 0 ] || die "tests failed: $title"
}

# build_program NAME: builds it by the release preset and puts its path into PROGRAM. The program has stdin and stdout for
# itself: nothing here reads or writes them, the log is shown when something fails.
build_program() {
    local log="$ROOT/build/$1.log" status
    PROGRAM="$ROOT/build/release/bin/$1"
    mkdir -p "$ROOT/build" || die "cannot write to $ROOT"
    # Two runs in one pipe must not build into one directory at the same time.
    exec 9>"$ROOT/build/.lock"
    flock 9
    [ -x "$PROGRAM" ] || say "first run: preparing, see $log"
    # Not "if ! …": a condition would switch errexit off inside.
    set +e
    (
        set -e
        ensure_packages "${BUILD_PACKAGES[@]}"
        if [ ! -f "$ROOT/build/release/build.ninja" ] ||
            ! grep -Fqx "CMAKE_HOME_DIRECTORY:INTERNAL=$ROOT" "$ROOT/build/release/CMakeCache.txt"; then
            say "configuring"
            configure release
        fi
        cmake --build "$ROOT/build/release" --target "bin/$1"
    ) </dev/null >"$log" 2>&1 9>&-
    status=$?
    set -e
    if [ "$status" -ne 0 ]; then
        cat "$log" >&2
        die "set-up failed"
    fi
    exec 9>&-
}
