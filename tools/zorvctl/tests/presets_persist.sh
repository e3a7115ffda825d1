# Presets survive between runs through --props, as persist.* properties survive a reboot:
# the first run saves preset 7 and exits; the second starts from the full frame and recalls it.
"$ZORVCTL" --props "$WORK/props" -c "moveCamera 0 ZOOM_IN 100" -c "moveCamera 0 PAN_LEFT 50" \
  -c "savePreset 0 7" -c "prop set vendor.not.kept 1"
echo "exit $?"
echo "--- saved properties"
cat "$WORK/props"
echo "--- second run"
"$ZORVCTL" --fold --props "$WORK/props" --svg "$WORK/presets.svg" -c "setListener L1" \
  -c "getCurrentCameraCropArea" -c "gotoPreset 0 7" -c "gotoPreset 0 8" \
  -c "prop get persist.camera.preset.7.r" -c "prop get vendor.not.kept"
echo "exit $?"
echo "--- preset outline in the picture"
grep 'preset 7' "$WORK/presets.svg"
