# Stat points: the device's services log statistics as lines; the report the
# messaging agent uploads turns the good ones into records and counts the
# rest (a line of 4097 bytes or more is "long", one that is not
# "stat_points_none NAME=VALUE" is "bad").
STATS="$DEMO/stat_points.log"
{
    echo "stat_points_none boot_count=3"
    echo "stat_points_none wifi_reconnects=12"
    echo "stat_points_none wakeword=quil"
    echo "garbage"
    echo "stat_points_none volume=high=loud"
    head -c 5000 /dev/zero | tr '\0' 'x'
    echo
    echo "stat_points_none ota_result=idle"
} > "$STATS"
say "A stat log with good, bad and long lines"
sed 's/^\(.\{60\}\).\{20,\}$/\1... (a 5000-byte line)/' "$STATS"
run "The stat points report, tagged with the device's identity" stat-points "$STATS" --pretty
