# Requests merged through the queue: queued ones get the always-applied tags, appended or
# replaced in place; empty ones every cached entry; own ones nothing; no cache, no merge.
"$ZORVCTL" -c "request 0 queue" \
  -c "setMetaData device@3.2/internal/0 android.control.aeExposureCompensation -2" \
  -c "setMetaArray 0 0xd0000 100 56 1180 664" -c "cache add 0 android.lens.focusDistance float 0.5" \
  -c "request 0 queue own empty" -c "cache remove 0 0xd0000" -c "request 0 queue,0x10001=1 empty" \
  -c "cache removeCamera 0" -c "request 0 empty" |
  awk '!/^> / && !/^  0x(1000[dfb357]|e0001|d0000 .*\[0, 0, 5440)/ && (!/^  0x/ || !seen[$0]++)'
echo "exit ${PIPESTATUS[0]}"
