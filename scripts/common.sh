# What run, test and .ci/run share. Sourced, with the project's root as working directory.

build_packages="g++ cmake make pkg-config libasound2-dev libcli11-dev nlohmann-json3-dev libmpg123-dev libsoxr-dev libtag1-dev zlib1g-dev"
test_packages="libgtest-dev python3 binutils ffmpeg lame sox twolame"

# The plug-in for Audacious is built where these are; dbus-daemon has dbus-run-session.
audacious_packages="audacious audacious-dev audacious-plugins dbus-daemon"

package_packages="audacious-dev dpkg-dev file lintian"

fuzz_packages="clang libclang-rt-14-dev llvm"

bench_packages="libbenchmark-dev libavcodec-dev libavformat-dev libsamplerate0-dev libsndfile1-dev"

# Installs what is missing of the Debian packages given.
install_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}\n' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "These Debian packages are missing: ${missing[*]}" >&2
            echo "Install them as root (apt-get install ${missing[*]}) and start again." >&2
            exit 1
        fi
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]}" >&2
    "${as_root[@]}" apt-get update -q >&2
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}" >&2
}

# Configures and builds a preset, or of it only $build_targets; further arguments go to the
# configuration. Quiet unless it fails. With CI set, warnings are errors in every build, so that none
# is made twice.
build_preset() {
    local preset=$1 log=build/$1.log
    shift
    mkdir -p build
    echo "Building build/$preset" >&2
    if ! { cmake --preset "$preset" -DATDP_WARNINGS_AS_ERRORS="${CI:+ON}" "$@" &&
        cmake --build --preset "$preset" -j "$(nproc)" \
            ${build_targets:+--target $build_targets}; } >"$log" 2>&1; then
        cat "$log" >&2
        exit 1
    fi
}
