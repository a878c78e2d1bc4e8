#!/bin/sh
# The demo's whole log, mirrored to standard error, holds none of the
# credentials the demo stores or receives: the channel secret, the token pair
# the cloud issued, and every token an answer handed over in full.
# Usage: check-demo-log.sh BUILD_DIR SOURCE_DIR
set -eu
BUILD=$1
SOURCE=$2
WORK=$(mktemp -d "${TMPDIR:-/tmp}/velmar-demo-log-XXXXXX")
trap 'rm -rf "$WORK"' EXIT
cd "$WORK"  # the demo keeps its device and cloud under ./.demo

VELMAR_LOG_STDERR=1 "$SOURCE/scripts/demo" "$BUILD" > demo.out 2> demo.log || {
    echo "the demo failed:"; tail -n 20 demo.log; exit 1
}
grep -q 'params is :' demo.log || { echo "no log line reached standard error"; exit 1; }

DEVICE=.demo/root/data/device
{
    for file in channel_secret device_token device_token_sign; do
        cat "$DEVICE/$file"
    done
    # Credentials printed whole by the demo's own commands (not masked there).
    grep -o -E '"(token|deviceTokenV2|signatureV2|sessionId|key|accessToken)":"[^"*]{8,}"' demo.out |
        sed 's/^"[^"]*":"//; s/"$//'
} | sort -u > credentials
[ "$(wc -l < credentials)" -ge 4 ] || { echo "too few credentials found:"; cat credentials; exit 1; }

found=0
while IFS= read -r credential; do
    if grep -F -q -- "$credential" demo.log; then
        echo "the log holds a credential in full: $(printf '%.4s' "$credential")..."
        grep -F -n -- "$credential" demo.log | cut -c1-60
        found=1
    fi
done < credentials
[ $found -eq 0 ] && echo "$(wc -l < credentials) credentials, none in $(wc -l < demo.log) log lines"
exit $found
