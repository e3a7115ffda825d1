# Notes on stderr for calls accepted that changed nothing (none for a refused move); --fold;
# status; completion and help's units; the terminal's Tab, Up and history file.
"$ZORVCTL" --fold -c "setListener L" -c "moveCamera 0 ZOOM_IN 100" -c "moveCamera 0 9 10" \
  -c "savePreset 0 100" -c 'setSceneJson "{}"' -c "clearListener M" -c "setTrackingMode 0 2" \
  -c "moveCamera 0 PAN_LEFT 1" -c 'setSceneJson "a\nb"' -c "setMetaData 0 0x10001 2" \
  -c "setVirtualCameraList 0 a b" -c "setVirtualCameraCapability 0 1" -c "savePreset 0 4" \
  -c "setZoomInLimit 0 3" -c status 2>&1 | grep -v '^> '
"$ZORVCTL" -c "complete moveCamera 0 zo" -c 'complete "setMetaData 0 android.control.aeE"' \
  -c 'complete "prop "' -c "complete help ca" | grep -v '^>'
"$ZORVCTL" help | grep -A1 "LEVEL (setZoomInLimit)"
printf 'setLis\tL1\nmoveCamera 0 ZOOM_I\t100\n\033[A\nquit\n' |
  HOME="$WORK" script -qec "$ZORVCTL --fold" /dev/null | tr -d '\r' | grep '^=>'
echo "history: $(grep -c moveCamera "$WORK/.zorvctl_history") moves"
# --props is written at every change (persist.* only, other lines kept): the preset is there
# once the answer after it is out, while zorvctl runs; killed, the next run recalls and draws it.
printf '# bench camera\nvendor.camera.bench=1\npersist.camera.preset.7.l=1\n' >"$WORK/props"
mkfifo "$WORK/in"
( "$ZORVCTL" --props "$WORK/props" <"$WORK/in" >/dev/null &
  exec 3>"$WORK/in"
  printf 'moveCamera 0 ZOOM_IN 100\nprop set vendor.not.kept 1\nsavePreset 0 7\n' >&3
  for _ in $(seq 600); do grep -q preset.7.b "$WORK/props" && break; sleep 0.1; done
  kill -KILL $!; wait $!; echo "ended abruptly"
) 2>/dev/null
cat "$WORK/props"
"$ZORVCTL" --props "$WORK/props" --svg "$WORK/p.svg" -c "gotoPreset 0 7" -c "gotoPreset 0 8" \
  -c "getCurrentCameraCropArea" -c "prop get vendor.camera.bench" | grep -v '^>'
grep -c 'preset 7' "$WORK/p.svg"
printf 'persist.a=1\nnot a property\n' >"$WORK/bad"
"$ZORVCTL" --props "$WORK/bad" getTrackingMode 0 2>&1 | sed "s|$WORK|WORK|"; echo "exit ${PIPESTATUS[0]}"
