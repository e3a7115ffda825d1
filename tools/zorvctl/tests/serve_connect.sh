# Two --connect runs against one serve answer as one local script, errors too; a watching client
# sees the others' events; SIGTERM ends both, 0.
"$ZORVCTL" serve --port 0 >"$WORK/serve.out" &
server=$!
for _ in $(seq 600); do grep -q '^serving' "$WORK/serve.out" && break; sleep 0.1; done
address=$(sed -n 's|^serving http://||p' "$WORK/serve.out")
commands=(-c "setListener L1" -c "moveCamera 0 ZOOM_IN 100" -c "savePreset 0 3"
  -c "setTrackingMode 0 2" -c "moveCamera 0 PAN_LEFT 10" -c "getTrackingMode 0")
"$ZORVCTL" "${commands[@]}" -c "gotoPreset 0 3" >"$WORK/local" 2>&1
{ "$ZORVCTL" --connect "$address" "${commands[@]}"; "$ZORVCTL" --connect "$address" -c "gotoPreset 0 3"; } \
  >"$WORK/remote" 2>&1
diff "$WORK/local" "$WORK/remote" && echo "same output"
"$ZORVCTL" --connect "$address" watch >"$WORK/watch" 2>&1 &
watcher=$!
"$ZORVCTL" --connect "$address" savePreset 0; echo "exit $?"
timeout 50 bash -c "until grep -q '^usage: savePreset' $WORK/watch; do sleep 0.1; done"
kill -TERM $server
wait $server; echo "serve exit $?"
wait $watcher; echo "watch exit $?"
head -n -3 "$WORK/watch" | diff "$WORK/local" - && echo "the watching client saw the same"
tail -n 3 "$WORK/watch"
