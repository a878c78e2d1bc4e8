# Device services: a notification landed on the user's phone, the voice
# assistant's service token, and the work-day calendar fetched, then asked
# for again and answered "not modified".
run "Push notification: the text travels in extraAttributes" notify 2 "Time to leave for the airport"
run "The voice assistant's service token (masked)" ai-token

say "Work-day calendar: fetched once"
echo "\$ quilctl workday-config"
WORKDAY=$("$QUILCTL" workday-config || true)
echo "$WORKDAY"
WORKDAY_VERSION=$(printf '%s' "$WORKDAY" | sed -n 's/.*"version":"\([^"]*\)".*/\1/p')
run "Work-day calendar: asked again with version $WORKDAY_VERSION, the cloud answers 304" \
    workday-config "$WORKDAY_VERSION"
