# The typical request: in a fresh process, with a listener and tracking off, moveCamera ZOOM_IN
# by 100 announces the crop {100, 56, 1180, 664} and the scene text with source 425, 238, 4590,
# 2584, logs the move, and returns true. Listener addresses vary from run to run.
"$ZORVCTL" --log -c "setListener L1" -c "moveCamera 0 ZOOM_IN 100" -c "getCurrentCameraCropArea" |
  sed -E 's/(listener) 0x[0-9a-f]{8}/\1 0xADDRESS/'
echo "exit ${PIPESTATUS[0]}"
