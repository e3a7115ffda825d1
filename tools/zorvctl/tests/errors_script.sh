# A script's (-f, -f -, -c) first error stops it, status 1; piped input goes on, status 1.
"$ZORVCTL" -f errors.zc; echo "exit $?"
printf 'zoom 0 in\ngetTrackingMode 0\n' | "$ZORVCTL" -f -; echo "exit $?"
"$ZORVCTL" -c "moveCamera 0 ZOOM_IN ten" -c "getTrackingMode 0"; echo "exit $?"
"$ZORVCTL" moveCamera 0 ZOOM_SIDEWAYS 10; echo "exit $?"
"$ZORVCTL" getTrackingMode 0 1; echo "exit $?"
"$ZORVCTL" -c 'setSceneJson "{'; echo "exit $?"
printf 'zoom 0 in\nsavePreset 0\ngetTrackingMode 0\n' | "$ZORVCTL"; echo "exit $?"
printf 'quit\ngetTrackingMode 0\n' | "$ZORVCTL"  # nothing runs after quit
"$ZORVCTL" --lib /nonexistent/provider.so getTrackingMode 0; echo "exit $?"
"$ZORVCTL" --lib "$LIB_WITHOUT_FACTORY" getTrackingMode 0 2>&1 | sed "s|$LIB_WITHOUT_FACTORY|LIB|"
echo "exit ${PIPESTATUS[0]}"
