# Shared set-up of scripts/run and scripts/test: installs the Debian packages that are missing,
# configures the build folder once and builds incrementally. Sourced, not run.
#   velm_setup "extra packages…"   (the build packages are always included)

VELM_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
VELM_BUILD=${VELM_BUILD:-$VELM_ROOT/build}
VELM_BUILD_PACKAGES="cmake ninja-build g++ pkg-config qt6-base-dev libqt6opengl6-dev qt6-svg-dev
    qt6-webengine-dev libmpv-dev libavformat-dev libavcodec-dev libswscale-dev libswresample-dev
    libavutil-dev libpulse-dev libopencv-dnn-dev libopencv-imgproc-dev zlib1g-dev libexpat1-dev
    libopencv-objdetect-dev"

velm_missing_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
            missing+=("$package")
    done
    echo "${missing[*]}"
}

velm_install_packages() {
    local missing
    missing=$(velm_missing_packages "$@")
    [ -z "$missing" ] && return 0
    if ! command -v apt-get >/dev/null 2>&1; then
        echo "Missing packages: $missing (install them with your system's package manager)" >&2
        return 1
    fi
    if [ "$(id -u)" != 0 ]; then
        echo "Missing packages. Install them with:" >&2
        echo "  sudo apt-get update && sudo apt-get install -y --no-install-recommends $missing" >&2
        return 1
    fi
    echo "Installing $missing" >&2
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq && apt-get install -y -qq --no-install-recommends $missing >&2
}

velm_build() {
    if [ ! -f "$VELM_BUILD/build.ninja" ]; then
        cmake -S "$VELM_ROOT" -B "$VELM_BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >&2
    elif [ $# -gt 0 ]; then
        cmake "$VELM_BUILD" "$@" >/dev/null
    fi
    cmake --build "$VELM_BUILD" -j2
}
