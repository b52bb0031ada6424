# shellcheck shell=bash
# What ./run and ./test share: install what is missing, configure, build. To be sourced.
#
# Everything said here goes to standard error, so that standard output belongs to the program.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
setup_log="$root/build/setup.log"

say() {
    printf '==> %s\n' "$*" >&2
}

# fail SENTENCE: the one sentence that says why, and what to do.
fail() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# follow LOG: adds standard input to LOG, and shows how far it has come: by its last line on a
# terminal, and elsewhere by ninja's count at every tenth part.
follow() {
    local log=$1 line columns=80 next=10
    if [[ -t 2 ]]; then
        read -r _ columns < <(stty size <&2 2>/dev/null) || true
    fi
    while IFS= read -r line; do
        printf '%s\n' "$line" >>"$log"
        if [[ -t 2 ]]; then
            printf '\r\033[K    %s' "${line:0:columns-5}" >&2
        elif [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]] &&
            ((BASH_REMATCH[2] >= 10 && BASH_REMATCH[1] * 100 >= BASH_REMATCH[2] * next)); then
            printf '    %s/%s\n' "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}" >&2
            next=$((BASH_REMATCH[1] * 100 / BASH_REMATCH[2] / 10 * 10 + 10))
        fi
    done
    if [[ -t 2 ]]; then
        printf '\r\033[K' >&2
    fi
}

# -- packages --------------------------------------------------------------------------------------

# packages SECTION...: the names listed under these headings.
packages() {
    local line section=""
    while read -r line; do
        case $line in
        "" | "#"*) ;;
        "["*"]")
            section=${line#[}
            section=${section%]}
            ;;
        *)
            if [[ " $* " == *" $section "* ]]; then
                printf '%s\n' "$line"
            fi
            ;;
        esac
    done <"$root/tools/packages.txt"
}

# missing_packages NAME...: those that are not installed.
missing_packages() {
    local installed name
    installed=$(dpkg-query --show --showformat='${db:Status-Abbrev}=${Package}\n' "$@" 2>/dev/null) || true
    for name; do
        if [[ $'\n'$installed$'\n' != *"i =$name"$'\n'* ]]; then
            printf '%s\n' "$name"
        fi
    done
}

# why_apt_failed: reads the set-up log and says it in one sentence.
why_apt_failed() {
    local name
    if grep -Eq 'No space left on device|enough free space' "$setup_log"; then
        echo "there is not enough disk space for the packages (see $setup_log)."
    elif grep -Eq 'Could not get lock|Unable to acquire the dpkg' "$setup_log"; then
        echo "another program is installing packages; wait for it to end, and start again."
    elif grep -q 'dpkg was interrupted' "$setup_log"; then
        echo "an earlier installation was interrupted; run 'dpkg --configure -a' as root, and start again."
    elif grep -Eq 'Temporary failure resolving|Could not resolve|Could not connect|Connection (failed|timed out)|Network is unreachable|Unable to connect' "$setup_log"; then
        echo "the packages could not be fetched: is there a network connection? (see $setup_log)"
    elif name=$(sed -nE "s/^E: (Unable to locate package |Package '?)([^' ]+).*/\2/p" "$setup_log" | head -n 1) &&
        [[ -n $name ]]; then
        echo "this system's package sources have no '$name': they must be those of Debian 12 (section main)."
    else
        echo "apt-get could not install the packages; see $setup_log."
    fi
}

# as_root COMMAND...
as_root() {
    if [[ $EUID -eq 0 ]]; then
        "$@"
    else
        sudo -- "$@"
    fi
}

# apt_get ARGUMENT...: apt-get that asks nothing and is recorded.
apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive LC_ALL=C apt-get --quiet --yes \
        -o DPkg::Lock::Timeout=120 -o Dpkg::Use-Pty=0 "$@" 2>&1 </dev/null | follow "$setup_log"
}

# may_become_root COUNT: asks for the password where sudo wants one.
may_become_root() {
    if [[ $EUID -eq 0 ]]; then
        return
    fi
    if ! command -v sudo >/dev/null; then
        fail "$1 packages are missing and there is no sudo: start this once as root."
    fi
    if sudo -n true 2>/dev/null; then
        return
    fi
    if { : </dev/tty; } 2>/dev/null; then
        say "Installing $1 packages needs your password"
        if sudo -v; then
            return
        fi
    fi
    fail "$1 packages are missing and sudo refuses: start this once as root."
}

# require SECTION...: installs the packages of these sections that are missing. Calls apt-get only
# if there are any.
require() {
    local -a wanted missing
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        fail "this is not a Debian system: install the counterparts of tools/packages.txt by hand," \
            "then use 'cmake --preset release && cmake --build --preset release'."
    fi
    mapfile -t wanted < <(packages "$@" | sort -u)
    mapfile -t missing < <(missing_packages "${wanted[@]}")
    if [[ ${#missing[@]} -eq 0 ]]; then
        return
    fi
    may_become_root "${#missing[@]}"
    say "Fetching the package lists"
    : >"$setup_log" # a log of this attempt alone
    # A source that fails is no reason to stop: the packages may come from another one.
    apt_get update || true
    say "Installing ${#missing[@]} packages: ${missing[*]}"
    apt_get install --no-install-recommends "${missing[@]}" || fail "$(why_apt_failed)"
}

# -- building --------------------------------------------------------------------------------------

# prepare_build_folder: makes build/, or says why it can't.
prepare_build_folder() {
    if ! mkdir -p "$root/build" 2>/dev/null || [[ ! -w $root/build ]]; then
        fail "can't write to $root/build: it belongs to another user, or the disk is read-only."
    fi
}

# hand_over_to_owner SCRIPT ARGUMENT...: under sudo, goes on as the user who called it, if the tree
# is theirs: neither files that only root can change nor a program without the user's session.
hand_over_to_owner() {
    local user=${SUDO_UID:-0} group=${SUDO_GID:-0} runtime
    local -a session
    if [[ $EUID -ne 0 || $user -eq 0 || $(stat -c %u "$root") -ne $user ]]; then
        return 0
    fi
    runtime=/run/user/$user
    session=(HOME="$(getent passwd "$user" | cut -d: -f6)" USER="$SUDO_USER" LOGNAME="$SUDO_USER")
    if [[ -d $runtime ]]; then
        session+=(XDG_RUNTIME_DIR="$runtime" DBUS_SESSION_BUS_ADDRESS="unix:path=$runtime/bus")
    fi
    chown -Rh "$user:$group" "$root/build"
    exec setpriv --reuid "$user" --regid "$group" --init-groups \
        env -u SUDO_UID -u SUDO_GID -u SUDO_USER -u SUDO_COMMAND "${session[@]}" "$@"
}

# job_count: how many compilers may run: one per processor, and one per gibibyte of free memory.
job_count() {
    local count name kibibytes
    count=$(nproc)
    while read -r name kibibytes _; do
        if [[ $name == MemAvailable: && $((kibibytes / 1048576)) -lt $count ]]; then
            count=$((kibibytes / 1048576))
        fi
    done </proc/meminfo
    echo $((count > 0 ? count : 1))
}

# first_errors LOG: what the compiler said first.
first_errors() {
    grep -E -A 4 '(error|Error|undefined symbol|No space left)[: ]' "$1" | head -n 20 >&2 || true
}

# is_configured PRESET: whether ninja can take over; it runs cmake again by itself where that is due.
is_configured() {
    local folder=$root/build/$1
    [[ -f $folder/build.ninja && ! $root/CMakePresets.json -nt $folder/build.ninja ]] &&
        grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt"
}

configure() {
    local preset=$1 log=$root/build/$1/configure.log
    local -a fresh=()
    if is_configured "$preset"; then
        return
    fi
    say "Configuring ($preset)"
    mkdir -p "$root/build/$preset"
    if [[ -f $root/build/$preset/CMakeCache.txt ]] &&
        ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$root/build/$preset/CMakeCache.txt"; then
        fresh=(--fresh) # the tree has moved since
    fi
    if ! (cd "$root" && cmake --preset "$preset" "${fresh[@]}") >"$log" 2>&1; then
        rm -f "$root/build/$preset/build.ninja"
        grep -A 8 'CMake Error' "$log" | head -n 20 >&2 || true
        fail "configuring failed; see $log."
    fi
}

# build PRESET: configures if need be, and builds everything.
build() {
    local preset=$1 log=$root/build/$1/build.log
    configure "$preset"
    say "Building ($preset)"
    : >"$log"
    if ! (cd "$root" && cmake --build --preset "$preset" --parallel "$(job_count)") 2>&1 | follow "$log"; then
        first_errors "$log"
        if grep -q 'No space left on device' "$log"; then
            fail "the disk is full; building needs about 2 GB under $root/build."
        fi
        fail "the build failed; see $log."
    fi
}
