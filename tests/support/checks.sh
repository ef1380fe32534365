# Shared by the tests that are shell scripts. `work` is the script's temporary folder.
failures=0
checks=0

# check TITLE COMMAND…: passes if the command succeeds; shows the command's output if it fails.
check() {
    checks=$((checks + 1))
    if ! "${@:2}" >"$work/output" 2>&1; then
        failures=$((failures + 1))
        echo "FAILED: $1"
        head -c 2000 "$work/output"
    fi
}
same() { diff <(cat "$1") <(cat "$2"); }
