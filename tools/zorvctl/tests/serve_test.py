"""serve_test.py ZORVCTL bad_input|load: bad input gets 4xx and a JSON error and the service goes
on; 8 clients x 500 mixed calls are all answered and the end state is consistent."""
import json, random, sys, threading, time, urllib.request
from concurrent.futures import ThreadPoolExecutor
from serving import Service, WAIT

# method, body, status, text the error must contain
BAD_INPUT = [
    ("moveCamera", '{"camera":', 400, "malformed JSON"),
    ("moveCamera", "[1, 2]", 400, "not a JSON object"),
    ("fly", {}, 404, 'unknown method "fly"'),
    ("cache/fly", {}, 404, 'unknown method "cache fly"'),
    ("moveCamera", {"camera": "0", "direction": "ZOOM_IN"}, 400, "missing step"),
    ("moveCamera", {"camera": "0", "direction": "ZOOM_IN", "step": 2**31}, 400, "out of range"),
    ("moveCamera", {"camera": "0", "direction": "SIDEWAYS", "step": 1}, 400, "not a direction"),
    ("savePreset", {"camera": "0", "number": 1, "speed": 2}, 400, 'unknown argument "speed"'),
    ("setZoomInLimit", {"camera": "0", "level": {"a": 1}}, 400, "not a string, number"),
    ("run", {"line": 'setSceneJson "{'}, 400, "unterminated quote"),
    ("run", {"words": ["nothing"]}, 400, 'unknown command "nothing"'),
    ("run", {}, 400, 'give "line" or "words"'),
    ("fd/configure", {}, 409, "run getFDSessionInterface first"),
    ("moveCamera", "{" + " " * 65536 + "}", 413, "over 65536 bytes"),
    ("/nowhere", {}, 404, ""),
]


def bad_input(service):
    for method, body, status, error in BAD_INPUT:
        got, answer = service.call(method, body)
        assert (got, error in answer["error"]) == (status, True), (method, got, answer)
        assert service.call("getCurrentCameraCropArea")[1]["result"]["crops"] == [[0, 0, 1280, 720]]


CLIENTS, CALLS, MOVES = 8, 450, 50  # per client: mixed calls, then moves only
DIRECTIONS = ["PAN_LEFT", "PAN_RIGHT", "TILT_UP", "TILT_DOWN", "ZOOM_IN", "ZOOM_OUT"]
move = lambda rng: ("moveCamera", {"camera": "0", "direction": rng.choice(DIRECTIONS), "step": rng.randint(1, 200)})
mixed = lambda rng: rng.choice([
    move(rng), ("setTrackingMode", {"camera": "0", "mode": rng.choice([0, 0, 1, 2])}),
    ("savePreset", {"camera": "0", "number": rng.randint(0, 3)}), ("gotoPreset", {"camera": "0", "number": rng.randint(0, 3)}),
    ("setScene", {"crop": [[0, 0, rng.randint(100, 1280), 720]]}), ("getCurrentCameraCropArea", {}),
    ("getTrackingMode", {"camera": "0"})])


def run_clients(service, calls, pick):
    def client(seed):
        rng = random.Random(seed)
        return [(call, service.call(*call)) for call in (pick(rng) for _ in range(calls))]

    with ThreadPoolExecutor(CLIENTS) as pool:
        failures = [f for c in pool.map(client, range(CLIENTS), timeout=3 * WAIT) for f in c if f[1][0] != 200]
    assert not failures, failures[:5]


def load(service):
    assert service.call("setListener", {"listener": "watcher"})[0] == 200
    last = {}  # from the event stream: the last tracking mode and crop announced, the last seq
    stream = urllib.request.urlopen(service.url + "/api/events", timeout=WAIT)

    def read_stream():
        for event in (json.loads(line[6:]) for line in stream if line.startswith(b"data: ")):
            key = {"cameraDeviceTrackingChange": "mode", "onCameraCropApplied": "crops"}.get(event.get("method"))
            if key:
                last[key] = event["args"][key]
            last["seq"] = event["seq"]

    def settled():  # the state once the stream has caught up with it
        state = service.state()
        while last.get("seq") != state["seq"] and time.monotonic() - start < 3 * WAIT:
            time.sleep(0.05)
        return state

    threading.Thread(target=read_stream, daemon=True).start()
    start = time.monotonic()
    run_clients(service, CALLS, mixed)
    state = settled()
    assert state["trackingMode"] == int(state["properties"]["vendor.talkertracking.flag"]) == last["mode"], (
        state["trackingMode"], state["properties"], last)
    # Tracking off (back to the full frame, unannounced), then moves only: the last crop announced is in force.
    assert service.call("setTrackingMode", {"camera": "0", "mode": 0})[0] == 200
    run_clients(service, MOVES, move)
    state = settled()
    assert state["inForce"]["crops"] == state["lastAnnounced"]["crops"] == last["crops"], (state, last)
    print("%d calls in %.1f s" % (CLIENTS * (CALLS + MOVES), time.monotonic() - start))


if __name__ == "__main__":
    service = Service(sys.argv[1])
    try:
        {"bad_input": bad_input, "load": load}[sys.argv[2]](service)
    finally:
        service.stop()
