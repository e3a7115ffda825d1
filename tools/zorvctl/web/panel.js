// The zorvctl panel: draws the service's state and reports its events live; every control is
// one call of the service's JSON API.
"use strict";
const SCALE = 4.25;  // the 1280 x 720 crop space in the 5440 x 3060 frame
const PREFIX = { echo: "> ", result: "=> ", cb: "cb ", engine: "engine ", req: "req ", entry: "  ",
                 log: "log ", error: "zorvctl: " };
const $ = (id) => document.getElementById(id);
const camera = () => $("camera").value;

async function api(method, args) {
  const res = await fetch("/api/" + method, { method: "POST", body: JSON.stringify(args || {}) });
  const answer = await res.json();
  const shown = $("answer");
  shown.className = "answer" + (res.ok ? "" : " error");
  const result = (answer.events || []).filter((e) => e.kind === "result").pop();
  shown.textContent = res.ok ? method + " => " + (result ? result.text : "done") : answer.error;
  refresh();
  return answer;
}

function place(rect, crop) {
  const [l, t, r, b] = crop || [0, 0, 0, 0];
  const box = { x: l * SCALE, y: t * SCALE, width: (r - l) * SCALE, height: (b - t) * SCALE };
  for (const k in box) rect.setAttribute(k, box[k]);
  rect.style.display = crop ? "" : "none";
}

function cell(row, text, tag) {
  const c = document.createElement(tag || "td");
  c.textContent = typeof text === "string" ? text : JSON.stringify(text);
  row.appendChild(c);
}

function draw(s) {
  const inForce = s.inForce && s.inForce.crops[0];
  const announced = s.lastAnnounced && s.lastAnnounced.crops[0];
  place($("inforce"), inForce);
  place($("announced"), announced);
  $("inforce-text").textContent = inForce ? "{" + inForce + "}" : "none";
  $("announced-text").textContent = announced ? "{" + announced + "}" : "none";
  const presets = $("presets");
  presets.textContent = "";
  for (const [n, crop] of Object.entries(s.presets)) {
    const r = document.createElementNS("http://www.w3.org/2000/svg", "rect");
    r.setAttribute("class", "preset");
    r.dataset.preset = n;
    place(r, crop);
    const label = document.createElementNS("http://www.w3.org/2000/svg", "text");
    label.setAttribute("class", "preset-label");
    label.setAttribute("x", crop[2] * SCALE - 40);
    label.setAttribute("y", crop[1] * SCALE + 140);
    label.setAttribute("text-anchor", "end");
    label.textContent = "preset " + n;
    presets.append(r, label);
  }
  if (document.activeElement !== $("mode")) $("mode").value = String(s.trackingMode);
  const vc = $("vc");
  vc.textContent = "";
  for (const [name, value] of Object.entries(s.virtualCameras)) {
    const row = vc.insertRow();
    cell(row, name, "th");
    cell(row, value);
  }
  $("cache").textContent = s.cache.length ? s.cache.join("\n") : "(none for camera " + s.camera + ")";
}

let pending = null, asked = 0;  // one state request every 50 ms at most; the latest is drawn
function refresh() {
  if (pending) return;
  pending = setTimeout(async () => {
    pending = null;
    const n = ++asked;
    const state = await (await fetch("/api/state?camera=" + encodeURIComponent(camera()))).json();
    if (n === asked) draw(state);
  }, 50);
}

function logEvent(e) {
  const log = $("log");
  const line = (PREFIX[e.kind] || "") + e.text;
  let item;
  if (e.body !== undefined) {  // a scene text, folded under its line
    item = document.createElement("details");
    const summary = document.createElement("summary");
    summary.textContent = line;
    const body = document.createElement("pre");
    body.textContent = e.body;
    item.append(summary, body);
  } else {
    item = document.createElement("div");
    item.textContent = line;
  }
  item.className = e.kind;
  const atEnd = log.scrollTop + log.clientHeight >= log.scrollHeight - 4;
  log.appendChild(item);
  while (log.childNodes.length > 1000) log.removeChild(log.firstChild);
  if (atEnd) log.scrollTop = log.scrollHeight;
}

const move = (direction) => api("moveCamera", { camera: camera(), direction, step: Number($("step").value) });
for (const b of document.querySelectorAll("[data-move]")) b.onclick = () => move(b.dataset.move);
const KEYS = { ArrowLeft: "PAN_LEFT", ArrowRight: "PAN_RIGHT", ArrowUp: "TILT_UP",
               ArrowDown: "TILT_DOWN", "+": "ZOOM_IN", "=": "ZOOM_IN", "-": "ZOOM_OUT" };
document.addEventListener("keydown", (e) => {
  if (e.target.tagName === "INPUT" || e.target.tagName === "SELECT" || !KEYS[e.key]) return;
  e.preventDefault();
  move(KEYS[e.key]);
});
$("save").onclick = () => api("savePreset", { camera: camera(), number: Number($("preset").value) });
$("recall").onclick = () => api("gotoPreset", { camera: camera(), number: Number($("preset").value) });
$("mode").onchange = () => api("setTrackingMode", { camera: camera(), mode: Number($("mode").value) });
$("setScene").onclick = () => api("setScene", { crop: $("scene").value.split(/\s+/) });
$("camera").onchange = refresh;
$("showLog").onchange = () => $("log").classList.toggle("quiet", !$("showLog").checked);
$("request").onclick = async () => {
  const answer = await api("request", { camera: camera(), kind: $("kinds").value.split(/\s+/) });
  $("requestOut").textContent = (answer.events || []).filter((e) => e.kind !== "log")
      .map((e) => (PREFIX[e.kind] || "") + e.text).join("\n") || answer.error;
};

const events = new EventSource("/api/events");
events.onopen = () => { $("link").textContent = "live"; refresh(); };
events.onerror = () => { $("link").textContent = "reconnecting"; };
events.onmessage = (m) => {
  const e = JSON.parse(m.data);
  logEvent(e);
  if (e.kind !== "log") refresh();
};
// The panel's own listener, registered once: it shows callbacks and keeps the last announced crop.
api("clearListener", { listener: "panel" }).then(() => api("setListener", { listener: "panel" }));
