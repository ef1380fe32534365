# Shared by the tests with Node.js for Windows under Wine. The including script sets `work`, `build` and `wine`.
npm=$build/deps/npm/node_modules

windows_path() { echo "Z:${1//\//\\}"; }
ORVEL_BIN=$(windows_path "$build/bin")
export ORVEL_BIN

# Node.js refuses to start on the Windows version that Wine reports by default.
"$wine" reg add 'HKCU\Software\Wine\AppDefaults\node.exe' /v Version /d win10 /f </dev/null >/dev/null 2>&1

# node RELEASE FOLDER ARGUMENTS…: runs Node.js for Windows. Its output goes through files: it cannot write to Wine's pipes.
node() {
    local status=0
    (cd "$2" && "$wine" "$npm/node-$1/bin/node.exe" "${@:3}" </dev/null >"$work/node.out" 2>"$work/node.err") || status=$?
    cat "$work/node.out" "$work/node.err"
    return $status
}

# with_koffi FOLDER: installs koffi, with which programs in this folder can call any DLL.
with_koffi() {
    mkdir -p "$1/node_modules/@koromix"
    ln -s "$npm/koffi" "$1/node_modules/"
    ln -s "$npm/@koromix/koffi-win32-x64" "$1/node_modules/@koromix/"
}

# install_into FOLDER PACKAGE: the packed package in a folder that was empty.
install_into() {
    mkdir -p "$1"
    (cd "$1" && npm install --silent --offline --ignore-scripts --no-package-lock --no-audit --no-fund "$2")
}
