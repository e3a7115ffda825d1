# The command line as a daily tool: a call accepted that changed nothing gets a note on stderr, a
# refused move none; --fold keeps a text's header line; status shows everything at a glance.
"$ZORVCTL" --fold -c "setListener L" -c "moveCamera 0 ZOOM_IN 100" -c "moveCamera 0 9 10" \
  -c "savePreset 0 100" -c 'setSceneJson "{}"' -c "clearListener M" -c "setTrackingMode 0 2" \
  -c "moveCamera 0 PAN_LEFT 1" -c 'setSceneJson "a\nb"' -c "setMetaData 0 0x10001 2" \
  -c "setVirtualCameraList 0 a b" -c "setVirtualCameraCapability 0 1" -c "savePreset 0 4" \
  -c "setZoomInLimit 0 3" -c status
echo "exit $?"
# Completion (directions in any case, tag names, second words, after help) and help's units.
"$ZORVCTL" -c "complete moveCamera 0 zo" -c 'complete "setMetaData 0 android.control.aeE"' \
  -c 'complete "prop "' -c "complete help ca"
"$ZORVCTL" help | grep -A1 "LEVEL (setZoomInLimit)"
# At a terminal: Tab completes a command and a direction, Up recalls the last line; history kept.
printf 'setLis\tL1\nmoveCamera 0 ZOOM_I\t100\n\033[A\nquit\n' |
  HOME="$WORK" script -qec "$ZORVCTL --fold" /dev/null | tr -d '\r' | grep '^=>'
echo "history: $(grep -c moveCamera "$WORK/.zorvctl_history") moves"
# --props is written at every change (only persist.*), keeping the file's other lines: the preset
# is there while zorvctl runs and after it is killed; the next run recalls it and draws it.
printf '# bench camera\nvendor.camera.bench=1\npersist.camera.preset.7.l=1\n' >"$WORK/props"
mkfifo "$WORK/in"
( # its stderr is silent: bash reports the kill there, early or late
  "$ZORVCTL" --props "$WORK/props" <"$WORK/in" >/dev/null &
  exec 3>"$WORK/in"
  printf 'moveCamera 0 ZOOM_IN 100\nprop set vendor.not.kept 1\nsavePreset 0 7\n' >&3
  for _ in $(seq 100); do grep -q preset.7.b=664 "$WORK/props" && break; sleep 0.1; done
  kill -KILL $!
  wait $!
  echo "killed: exit $?"
) 2>/dev/null
cat "$WORK/props"
"$ZORVCTL" --props "$WORK/props" --svg "$WORK/p.svg" -c "gotoPreset 0 7" -c "gotoPreset 0 8" \
  -c "getCurrentCameraCropArea" -c "prop get vendor.camera.bench"
grep -c 'preset 7' "$WORK/p.svg"
printf 'persist.a=1\nnot a property\n' >"$WORK/bad"
"$ZORVCTL" --props "$WORK/bad" getTrackingMode 0 2>&1 | sed "s|$WORK|WORK|"
echo "exit ${PIPESTATUS[0]}"
# The picture draws every announced crop, with a dot at each centre.
"$ZORVCTL" --svg "$WORK/p.svg" -f ../demo.zc >/dev/null
echo "centres drawn: $(grep -c '<circle' "$WORK/p.svg")"
