# The README's main command runs to the end: its answers, and every crop drawn as in docs/demo.svg.
"$ZORVCTL" --fold --svg "$WORK/demo.svg" -f ../demo.zc | awk '/^> status/ {s = 1} !s && /^(=>|req)/'
echo "exit ${PIPESTATUS[0]}"
diff ../../../docs/demo.svg "$WORK/demo.svg" && echo "picture matches docs/demo.svg"
