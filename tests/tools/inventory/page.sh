#!/usr/bin/env bash
# Opens pages of the inventory in headless Chromium. page.sh WINE BUILD SOURCE
set -uo pipefail
wine=$1
build=$2
source=$3
export LC_ALL=C.UTF-8
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
source "$source/tests/support/checks.sh"

# chromium ARGUMENTS…: prints the document after its scripts have run; the console goes to $work/console.
chromium() {
    timeout 120 /usr/bin/chromium --headless --no-sandbox --disable-gpu --enable-logging=stderr --log-level=0 \
        --user-data-dir="$work/profile" --virtual-time-budget=2000 --dump-dom "$@" 2>"$work/console"
}
console_is_silent() { ! grep CONSOLE "$work/console"; }

# measured PAGE WIDTH SCHEME: prints the width of the window, that of the content and the colour of a page. SCHEME: 0 dark, 1
# light. The page is in a frame, because a window of Chromium has at least 500 pixels; a copy of it has a script that measures.
measured() {
    local measure="parent.postMessage([innerWidth, document.documentElement.scrollWidth, getComputedStyle(document.body).backgroundColor].join(' '), '*')"
    sed -e '/Content-Security-Policy/d' -e "s|</body>|<script>$measure</script></body>|" "$1" >"$work/measured.html"
    cat >"$work/frame.html" <<END
<!DOCTYPE html><meta name="color-scheme" content="light dark"><body style="margin:0">
<script>onmessage = event => { document.title = event.data }</script>
<iframe src="measured.html" style="border:0;width:$2px;height:900px"></iframe>
END
    chromium --window-size=1400,1000 --blink-settings=preferredColorScheme="$3" "file://$work/frame.html" |
        sed -n 's|.*<title>\(.*\)</title>.*|\1|p'
}
fits() { # PAGE WIDTH
    local width content rest
    read -r width content rest <<<"$(measured "$1" "$2" 1)"
    echo "window $width, content $content"
    [ "$width" -eq "$2" ] && [ "$content" -le "$2" ]
}

for document in "$source"/tests/tools/inventory/documents/*.json; do
    name=$(basename "$document" .json)
    page=$work/$name.html
    (cd "$build/bin" && "$wine" orvel-format-document.exe page <"$document") >"$page"
    chromium "file://$page" >"$work/$name.dom"
    check "$name: the console is silent" console_is_silent
    check "$name: the title stays" grep -q '<title>Graphics inventory: [0-9]* graphics adapters</title>' "$work/$name.dom"
    for element in script img b iframe; do
        check "$name: no value becomes <$element>" [ "$(grep -c "<$element[ >]" "$work/$name.dom")" -eq 0 ]
    done
    for width in 400 1200; do check "$name: fits $width pixels" fits "$page" $width; done
done
check "a card named <script> is text" grep -qF "&lt;script&gt;document.title='owned'&lt;/script&gt;" "$work/hostile.dom"

# The checks can fail.
sed "s|&lt;script&gt;document.title=&#39;owned&#39;&lt;/script&gt;|<script>document.title='owned'</script>|" \
    "$work/hostile.html" >"$work/open.html"
chromium "file://$work/open.html" >"$work/open.dom"
check "a script that is not escaped is refused by the page's policy" grep -q 'CONSOLE.*Content Security Policy' "$work/console"
sed 's|<h1>|<h1 style="width:50rem">|' "$work/workstation.html" >"$work/wide.html"
too_wide() { ! fits "$work/wide.html" 400; }
check "a page that is too wide is noticed" too_wide

light=$(measured "$work/workstation.html" 1200 1)
dark=$(measured "$work/workstation.html" 1200 0)
check "the page is light" [ "${light#* * }" = "rgb(244, 245, 247)" ]
check "the page is dark" [ "${dark#* * }" = "rgb(16, 19, 23)" ]

# The command's own page, of this platform.
check "the command writes a page" "$wine" "$build/bin/orvel-graphic-cards.exe" inventory --html "Z:$work/platform.html"
chromium "file://$work/platform.html" >"$work/platform.dom"
check "the command's page is opened silently" console_is_silent
check "the command's page shows the adapter" grep -q '<h1>1 graphics adapter</h1>' "$work/platform.dom"

echo "$((checks - failures)) of $checks checks of the page passed"
[ $failures -eq 0 ]
