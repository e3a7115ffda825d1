# The README's main command: the demo script runs to the end, and the picture it writes is the
# one in docs/demo.svg. Scene texts are folded: typical_request checks one in full.
"$ZORVCTL" --fold --svg "$WORK/demo.svg" -f ../demo.zc
echo "exit $?"
diff ../../../docs/demo.svg "$WORK/demo.svg" && echo "picture matches docs/demo.svg"
