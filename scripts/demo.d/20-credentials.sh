# Credentials and the administrator: the registration check, the token pair
# renewed and then used, a super administrator bound in the cloud and
# synchronised to the device, and the assistant's settings kept by the
# device's own tools.

# Stand-ins for the device's tools, keeping their state in files under $ROOT.
tool() { cat > "$ROOT/usr/bin/$1"; chmod +x "$ROOT/usr/bin/$1"; }
mkdir -p "$ROOT/data/settings"
tool vebrain_level <<'TOOL'
#!/bin/sh
state="$(dirname "$0")/../../data/settings/vebrain_level"
case "$1" in
    get) printf '{"level":"%s"}\n' "$(cat "$state" 2>/dev/null || echo product)" ;;
    preview|product|preview4test) echo "$1" > "$state" ;;
    *) echo "vebrain_level: unknown level $1"; exit 1 ;;
esac
TOOL
tool experience_plan <<'TOOL'
#!/bin/sh
state="$(dirname "$0")/../../data/settings/experience_plan"
case "$1" in
    get) printf '{"enable":"%s"}\n' "$(cat "$state" 2>/dev/null || echo false)" ;;
    true|false) echo "$1" > "$state" ;;
    *) echo "experience_plan: get, true or false"; exit 1 ;;
esac
TOOL
tool bind_device.sh <<'TOOL'
#!/bin/sh
echo "$(date '+%H:%M:%S') $1" >> "$(dirname "$0")/../../data/status/bind.log"
TOOL

run "Registration check: signed with the channel secret alone, no cookies" register-check
run "Token renewal: the cloud issues a new pair and the device stores it" token-renew
run "A signed presence carrying the new pair: accepted" presence

say "Any other token is refused: the cloud accepts only the pair it issued last"
cp "$ROOT/data/device/device_token" "$DEMO/token.new"
store device_token stale-token
echo "\$ quilctl presence"
"$QUILCTL" presence || true
cp "$DEMO/token.new" "$ROOT/data/device/device_token"

run "Transfer: a device already on a pair is handed the same pair" token-transfer
run "The low-power keep-alive key (masked)" keepalive-key

# The cloud's administrator changes the way a user's phone app changes it.
cloud_admin() {
    "$CLOUD" control --ca "$CA" "$BASE/quil-cloud/super_admin" \
        deviceId="$(cat "$ROOT/data/device/deviceid")" userId="$1" > /dev/null
}
bind_log() { echo "bind_device.sh calls:"; sed 's/^/  /' "$ROOT/data/status/bind.log" 2>/dev/null || echo "  none"; }

say "A user binds the speaker in the phone app: administrator 52001 in the cloud"
cloud_admin 52001
run "The cloud's super administrator" super-admin --master
run "Synchronised to the device: it binds and stores 52001" --verbose admin-sync --master
bind_log
run "Synchronised again: nothing changed, nothing runs" admin-sync

say "The speaker changes hands: administrator 60002"
cloud_admin 60002
run "Synchronised: bound to the new administrator" admin-sync

say "The user removes the speaker from the account"
cloud_admin -1
run "The cloud's super administrator: none (-1, answered with code 612)" super-admin
run "Synchronised: the device unbinds and stores -1" --verbose admin-sync
bind_log
run "The stored administrator forgotten" admin-clear

run "The assistant's service level" level get
run "Set to preview" level set preview
run "Read back" level get
run "A word outside preview, product and preview4test never reaches the tool" \
    --verbose level set Preview
run "The experience plan" experience-plan get
run "Switched on" experience-plan set true
run "Read back" experience-plan get
