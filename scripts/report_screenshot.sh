#!/usr/bin/env bash
# Draws a page of "orxkdb report" as a reader sees it, for a look at it after a change:
#   scripts/report_screenshot.sh PAGE.html DIRECTORY
# leaves light.png, dark.png and paper-1.png, paper-2.png, ... there. Installs the Debian packages
# it needs: chromium draws, tidy looks at the HTML first, pdftoppm makes pictures of the print.
set -euo pipefail
[ $# -eq 2 ] || { sed -n '2,5s/^# //p' "$0" >&2; exit 1; }
page=$(realpath "$1")
mkdir -p "$2"
pictures=$(realpath "$2")
cd "$(dirname "$0")/.."
scripts/setup.sh chromium fonts-dejavu-core poppler-utils tidy

tidy -e -q "$page"
browser=(chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --window-size=1100,4200)
draw() { timeout 120 "${browser[@]}" "$@" "file://$page" 2>/dev/null; }
draw --screenshot="$pictures/light.png"
draw --blink-settings=preferredColorScheme=0 --screenshot="$pictures/dark.png"
draw --no-pdf-header-footer --print-to-pdf="$pictures/paper.pdf"
pdftoppm -r 60 -png "$pictures/paper.pdf" "$pictures/paper"
ls "$pictures"
