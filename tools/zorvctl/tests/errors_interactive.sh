# On standard input every error is reported and the next line still runs; the status is 1.
"$ZORVCTL" --fold <<'INPUT'
setListener L1
zoom 0 in
moveCamera 0 ZOOM_IN ten
savePreset 0
moveCamera 0 ZOOM_IN 100   # runs after the errors
getTrackingMode 0
INPUT
echo "exit $?"
