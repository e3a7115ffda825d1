"""Runs `zorvctl serve` on a free port for a test and calls its JSON API; waits up to WAIT s."""
import json, signal, subprocess, threading, urllib.error, urllib.request

WAIT = 60


class Service:
    def __init__(self, zorvctl):
        self.proc = subprocess.Popen([zorvctl, "serve", "--port", "0"], stdout=subprocess.PIPE, text=True)
        self.url = next(line.split()[1] for line in self.proc.stdout if line.startswith("serving "))
        threading.Thread(target=self.proc.stdout.read, daemon=True).start()

    def call(self, method, body=None):
        """POSTs body (a dict as JSON) to /api/METHOD, or to /PATH; returns (status, answer)."""
        data = body if isinstance(body, str) else json.dumps(body or {})
        try:
            with urllib.request.urlopen(self.url + ("" if method[0] == "/" else "/api/") + method,
                                        data.encode(), WAIT) as res:
                return res.status, json.load(res)
        except urllib.error.HTTPError as e:
            return e.code, json.load(e)

    def state(self):
        with urllib.request.urlopen(self.url + "/api/state", timeout=WAIT) as res:
            return json.load(res)

    def stop(self):  # SIGINT here, SIGTERM in serve_connect.sh: either ends it cleanly
        self.proc.send_signal(signal.SIGINT)
        assert self.proc.wait(timeout=WAIT) == 0, "zorvctl serve exited with %d" % self.proc.returncode
