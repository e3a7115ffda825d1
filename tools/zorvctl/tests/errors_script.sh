# In a script, or in commands given as arguments, the first error stops zorvctl with status 1
# and a message naming the line and giving the command's usage.
echo "--- unknown command on line 3 of a script"
"$ZORVCTL" -f errors.zc
echo "exit $?"
echo "--- bad number"
"$ZORVCTL" -c "setListener L1" -c "moveCamera 0 ZOOM_IN ten" -c "getCurrentCameraCropArea"
echo "exit $?"
echo "--- bad direction"
"$ZORVCTL" moveCamera 0 ZOOM_SIDEWAYS 10
echo "exit $?"
echo "--- missing argument"
"$ZORVCTL" savePreset 0
echo "exit $?"
echo "--- too many arguments"
"$ZORVCTL" getTrackingMode 0 1
echo "exit $?"
echo "--- unterminated quote"
"$ZORVCTL" -c 'setSceneJson "{'
echo "exit $?"
echo "--- library that cannot be loaded"
"$ZORVCTL" --lib /nonexistent/provider.so getTrackingMode 0
echo "exit $?"
echo "--- library without the factory"
"$ZORVCTL" --lib "$LIB_WITHOUT_FACTORY" getTrackingMode 0 2>&1 | sed "s|$LIB_WITHOUT_FACTORY|LIB|"
echo "exit ${PIPESTATUS[0]}"
