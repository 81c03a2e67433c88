# Sourced by ./run and ./test: the packages of a purpose, and a locale in which any file name can be told.

say() { printf '%s\n' "$*" >&2; }
die() { say "$*"; exit 1; }

# The packages listed for the purposes given, one a line.
packages_for() {
    local purpose
    for purpose in "$@"; do
        sed -n "s/^$purpose: *//p" "$root/Packaging/debian-packages" | tr ' ' '\n'
    done | sort -u
}

# Of the packages given, those that are not installed.
missing_of() {
    local package
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || printf '%s\n' "$package"
    done
}

# Installs what is missing for the purposes given; does nothing, and needs no rights, when all is there.
install_for() {
    command -v dpkg-query >/dev/null || die "Velmora is built on Debian 12; this system has no dpkg."
    local missing as_root=()
    mapfile -t missing < <(missing_of $(packages_for "$@"))
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null || die "These packages are missing and only root can install them:
  apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    say "Installing ${#missing[@]} packages: ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { "${as_root[@]}" apt-get update -q &&
           "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"; } \
        >"$log" 2>&1 </dev/null; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        die "The packages could not be installed."
    fi
    rm -f "$log"
}

# Configures and builds a preset: build PRESET [TARGET...]. Prints the compiler's words only when it fails.
build() {
    local preset=$1 log="$root/build/$1.log"
    shift
    mkdir -p "$root/build"
    say "Building ($preset)…"
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}; } >"$log" 2>&1 </dev/null; then
        tail -n 60 "$log" >&2
        die "The build failed; its whole output is in build/$preset.log."
    fi
}

# Without a UTF-8 locale, programs cannot name every file.
case "$(locale charmap 2>/dev/null)" in
    UTF-8) ;;
    *) export LC_ALL=C.UTF-8 ;;
esac
