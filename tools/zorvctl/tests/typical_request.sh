# A fresh process, a listener, tracking off: ZOOM_IN 100 announces {100,56,1180,664} and the scene.
"$ZORVCTL" --log -c "setListener L1" -c "moveCamera 0 ZOOM_IN 100" -c "getCurrentCameraCropArea" |
  sed -E 's/(listener) 0x[0-9a-f]{8}/\1 0xADDRESS/'
echo "exit ${PIPESTATUS[0]}"
