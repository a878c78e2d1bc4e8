# The doctor: every cause of a device that cannot reach the cloud, checked in
# turn. Healthy first (the demo has no log daemon: one warning), then with two
# faults made on purpose, a stray "\r\n" in a device file and a service key
# pointing at a loopback port where nothing listens; then both are undone.
CONF="$ROOT/usr/share/quil/messaging/messaging.conf"
run "The doctor, against the local cloud" doctor

cp "$ROOT/data/device/model" "$DEMO/model.saved"
cp "$CONF" "$DEMO/messaging.conf.saved"
printf 'quil.speaker.v2\r\n' > "$ROOT/data/device/model"
# Port 9 (discard) on loopback: nothing listens there in the demo's namespace.
sed -i 's|^sVeWiFiLOGURL=.*|sVeWiFiLOGURL=http://127.0.0.1:9/log|' "$CONF"
say "The doctor after two faults: a \"\\r\\n\" in model, a log service nobody answers"
echo "\$ quilctl doctor | grep -v '^ok '"
"$QUILCTL" doctor | grep -v '^ok ' || true

mv "$DEMO/model.saved" "$ROOT/data/device/model"
mv "$DEMO/messaging.conf.saved" "$CONF"
say "Both faults undone: the verdict of the JSON document"
echo "\$ quilctl doctor --json"
"$QUILCTL" doctor --json | sed -n 's/^{"command":"doctor",\("verdict":"[a-z]*","exitStatus":[0-9]\).*/{\1, ...}/p' || true
