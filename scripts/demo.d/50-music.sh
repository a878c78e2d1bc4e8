# Music: the account's playlists, then the songs of the first one as a list
# (every song is kept, also those the player has no source for), and the
# song information of a few songs, where only the playable ones remain.
run "The account's playlists" playlists

LIST=$("$QUILCTL" playlists | sed -n 's/.*"listIds":\[\([0-9-]*\).*/\1/p')
say "The songs of playlist $LIST, first page"
echo "\$ quilctl playlist-songs $LIST 0 10"
# One line per entry of the "musics" document: global ID, title, artist.
"$QUILCTL" playlist-songs "$LIST" 0 10 | sed 's/},{/}\n{/g' |
    sed -n 's/.*"artist_name":"\([^"]*\)","song":"\([^"]*\)","origin":"\([^"]*\)".*"global_id":\([0-9]*\).*/  \4  \2 - \1  [\3]/p' |
    sed 's/ - \( \)/\1/; s/\[\]$/[no source]/' || true

run "Song information: songs without a source are left out" \
    song-info '[1001,1004,1006,1007,9007199254740993]'
run "An album from the catalogue service (unsigned), song IDs as the service sent them" \
    album al-0042
