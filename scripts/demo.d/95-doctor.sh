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
run "The doctor after two faults: a \"\\r\\n\" in model, a log service nobody answers" doctor
run "The same findings as one JSON document" doctor --json

mv "$DEMO/model.saved" "$ROOT/data/device/model"
mv "$DEMO/messaging.conf.saved" "$CONF"
run "Both faults undone" doctor
