# Identity and the signed request: what the device is, and the cloud
# accepting (and refusing) its signature.
run "The device as the library sees it" identity
run "Presence: a signed GET the cloud checks against its registry" presence
run "Ping: a signed POST" ping 1

say "A request signed with a tampered channel secret is refused by the cloud"
cp "$ROOT/data/device/channel_secret" "$DEMO/secret.orig"
store channel_secret 00000000000000000000000000000000
echo "\$ quilctl presence"
"$QUILCTL" presence || true
cp "$DEMO/secret.orig" "$ROOT/data/device/channel_secret"
