# Shared by ./run and ./test: packages, configuration, build. Meant to be sourced from the root of the checkout.

packages=(
    g++ cmake ninja-build ccache git
    qt6-base-dev qt6-svg-dev libqt6opengl6-dev libgl1-mesa-dev libgl1-mesa-dri
    libvtk9-dev
    libtbb-dev libhdf5-dev libdeflate-dev libfmt-dev libeigen3-dev libcli11-dev nlohmann-json3-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    qt6-tools-dev qt6-l10n-tools qt6-translations-l10n
    xvfb xauth fonts-dejavu-core groff-base
)

say() { printf '== %s\n' "$*" >&2; }

fail() {
    printf 'error: %s\n' "$*" >&2
    exit 2
}

# Installs what is missing; quick when nothing is.
install_packages() {
    local missing=() package
    command -v dpkg-query >/dev/null || fail "this needs a Debian system (dpkg-query is missing)"
    for package in "${packages[@]}"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "these packages are missing and only root can install them: ${missing[*]}"
        as_root=(sudo)
    fi
    say "installing packages: ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { "${as_root[@]}" apt-get update &&
           "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"; } \
           >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        fail "these packages could not be installed: ${missing[*]}"
    fi
    rm -f "$log"
}

# configure_and_build PRESET FOLDER [TARGET...]
configure_and_build() {
    local preset=$1 folder=$2
    shift 2
    if [ ! -f "$folder/build.ninja" ]; then
        say "configuring ($preset)"
        mkdir -p "$folder"
        cmake --preset "$preset" >"$folder/configure.log" 2>&1 || { tail -n 30 "$folder/configure.log" >&2; fail "cmake cannot configure"; }
    fi
    say "building ($preset)"
    local targets=()
    [ $# -gt 0 ] && targets=(--target "$@")
    cmake --build "$folder" "${targets[@]}" >"$folder/build.log" 2>&1 || {
        grep -E -A5 'error|FAILED' "$folder/build.log" | head -n 40 >&2
        fail "the build failed; all of its output is in $folder/build.log"
    }
}
