"""Runs `zorvctl serve` on a free port for a test, and calls its JSON API."""
import json, re, signal, subprocess, threading, urllib.error, urllib.request


class Service:
    def __init__(self, zorvctl):
        self.proc = subprocess.Popen([zorvctl, "serve", "--port", "0"], stdout=subprocess.PIPE,
                                     text=True)
        for line in self.proc.stdout:
            found = re.match(r"serving (http://127\.0\.0\.1:\d+)", line)
            if found:
                self.url = found.group(1)
                break
        else:
            raise RuntimeError("zorvctl serve did not start")
        threading.Thread(target=self.proc.stdout.read, daemon=True).start()

    def call(self, method, body=None):
        """POSTs to /api/METHOD, or to /PATH, a dict as JSON; returns (status, answer)."""
        data = body if isinstance(body, (str, bytes)) else json.dumps(body or {})
        try:
            with urllib.request.urlopen(self.url + ("" if method[0] == "/" else "/api/") + method,
                                        data if isinstance(data, bytes) else data.encode(), 10) as res:
                return res.status, json.load(res)
        except urllib.error.HTTPError as e:
            return e.code, json.load(e)

    def state(self):
        with urllib.request.urlopen(self.url + "/api/state", timeout=10) as res:
            return json.load(res)

    def stop(self):
        """SIGINT (the transcript test uses SIGTERM); the service must end cleanly."""
        self.proc.send_signal(signal.SIGINT)
        assert self.proc.wait(timeout=10) == 0, "zorvctl serve exited with %d" % self.proc.returncode
