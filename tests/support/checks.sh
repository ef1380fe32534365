# Checks of the tests that are shell scripts. `work` is the script's own folder.
failures=0
checks=0

# check TITLE COMMAND…: passes when the command does; its output is shown when it does not.
check() {
    checks=$((checks + 1))
    if ! "${@:2}" >"$work/output" 2>&1; then
        failures=$((failures + 1))
        echo "FAILED: $1"
        head -c 2000 "$work/output"
    fi
}
same() { diff <(cat "$1") <(cat "$2"); }
