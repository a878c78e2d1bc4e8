# Directly addressed services: an upgrade check that finds an offer, a time
# sync, a log archive uploaded as a multipart form; then, on a second local
# cloud at port 443, an upgrade check whose first attempt fails and is
# recovered through the resolver list (the local cloud's own DNS responder,
# never a public one), and the account service's user profile for a token it
# issued.
VELMAR_DNS_SERVERS=$(sed -n 's/.*"dnsServers" *: *"\([^"]*\)".*/\1/p' "$DEMO/ready.json")
export VELMAR_DNS_SERVERS
# Without the local responder the retry would ask the library's public resolvers.
if [ -z "$VELMAR_DNS_SERVERS" ]; then
    echo "no DNS responder named in $DEMO/ready.json"
    exit 1
fi

run "Upgrade check: the cloud offers a newer image for this platform" upgrade-check
run "Upgrade check from the newest version: nothing to offer" upgrade-check quil.speaker.v2 2.15.0
run "Time sync" time-sync

tar -czf "$DEMO/logs.tar.gz" -C "$ROOT" data/status usr/share/quil/messaging
run "A log archive ($(wc -c < "$DEMO/logs.tar.gz") bytes) uploaded as a multipart form" \
    log-upload-lite "$DEMO/logs.tar.gz"

# Services reached by name on the standard port: a second cloud serves them
# on 127.0.0.1:443 (where the DNS responder sends every name), with both
# names in its certificate and its certificate authority trusted beside the
# first one.
say "A second local cloud for the services reached by name on port 443"
"$CLOUD" --tls --port 443 --extra-name account.velmar-cloud.test \
         --extra-name upgrade.velmar-cloud.test --work-dir "$DEMO/named" \
         --ready-file "$DEMO/named.json" > /dev/null 2> "$DEMO/named.log" &
NAMED_PID=$!
# Stopped with the first cloud should the tour end early.
trap 'kill $NAMED_PID $CLOUD_PID 2>/dev/null; wait $NAMED_PID $CLOUD_PID 2>/dev/null || true' EXIT INT TERM
i=0
while [ ! -s "$DEMO/named.json" ] && kill -0 $NAMED_PID 2>/dev/null && [ $i -lt 100 ]; do
    i=$((i + 1))
    sleep 0.1
done
if [ -s "$DEMO/named.json" ]; then
    cat "$CA" "$DEMO/named/ca.pem" > "$DEMO/ca-both.pem"
    export VELMAR_CA_FILE="$DEMO/ca-both.pem"
    CONF="$ROOT/usr/share/quil/messaging/messaging.conf"
    cp "$CONF" "$DEMO/messaging.conf.orig"
    sed -i "s|^sVeWiFiAPIURL=.*|sVeWiFiAPIURL=https://upgrade.velmar-cloud.test|" "$CONF"
    say "Upgrade check whose first attempt fails: retried through the resolver list"
    echo "(the name pinned to a dead address first; resolved by $VELMAR_DNS_SERVERS on the retry)"
    echo "\$ VELMAR_RESOLVE=upgrade.velmar-cloud.test:443:127.0.0.2 quilctl --verbose upgrade-check"
    VELMAR_RESOLVE=upgrade.velmar-cloud.test:443:127.0.0.2 "$QUILCTL" --verbose upgrade-check 2>&1 |
        grep -v -e 'URL: ' -e 'Params: ' || true
    cp "$DEMO/messaging.conf.orig" "$CONF"

    export VELMAR_RESOLVE="account.velmar-cloud.test:443:127.0.0.1"
    say "The account service at its fixed address, pinned with VELMAR_RESOLVE=$VELMAR_RESOLVE"
    echo "\$ quilctl http POST https://account.velmar-cloud.test/user/token userId=1001 clientId=app-7"
    TOKEN_ANSWER=$("$QUILCTL" http POST https://account.velmar-cloud.test/user/token \
                   userId=1001 clientId=app-7 || true)
    echo "$TOKEN_ANSWER"
    TOKEN=$(printf '%s' "$TOKEN_ANSWER" | sed -n 's/.*"token":"\([^"]*\)".*/\1/p')
    run "User profile for the token the account service issued" user-profile app-7 "$TOKEN"
    export VELMAR_CA_FILE="$CA"
    unset VELMAR_RESOLVE
else
    echo "no second cloud on 127.0.0.1:443 (not root?):"
    cat "$DEMO/named.log"
fi
kill $NAMED_PID 2>/dev/null || true
wait $NAMED_PID 2>/dev/null || true
trap 'kill $CLOUD_PID 2>/dev/null; wait $CLOUD_PID 2>/dev/null || true' EXIT INT TERM
