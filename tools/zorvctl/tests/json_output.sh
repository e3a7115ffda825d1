# A listener name with a blank is quoted; --json: one object per event, its values taken apart.
"$ZORVCTL" -c 'setListener "my viewer"' -c "moveCamera 0 ZOOM_IN 100" | grep CropApplied
"$ZORVCTL" --json -c 'setListener "my viewer"' -c "moveCamera 0 ZOOM_IN 100" \
  -c "setVirtualCameraInfo text1=\"a b\",entries=1:2:3,block=00ff,value1=7" \
  -c 'setVirtualCameraList 0 "a\"b" "c\nd"' -c "getVirtualCameraList 0" \
  -c "setTrackingMode 0 1" -c 'setSceneJson "x\n\ny"' \
  -c "setMetaData 0 0x10001 -2" -c "request 0 empty" -c "getTrackingMode 0" -c "nothing" 2>&1 | awk '!/"echo"/ || !n++'
echo "exit ${PIPESTATUS[0]}"
