"""browser_test.py ZORVCTL SCREENSHOT.png: the web panel in headless Chromium. Keys and buttons move
the crop; the drawing and the event log agree with the API; a preset goes round; tracking refuses moves."""
import sys, tempfile
from selenium import webdriver
from selenium.common.exceptions import TimeoutException
from selenium.webdriver.chrome.service import Service as Driver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.select import Select
from selenium.webdriver.support.wait import WebDriverWait
from serving import Service, WAIT

SCALE = 4.25


def browser(profile):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in ("headless no-sandbox disable-gpu disable-quic no-first-run disable-sync disable-background-networking "
                 "disable-component-update window-size=1400,1000 user-data-dir=" + profile).split():
        options.add_argument("--" + flag)
    page = webdriver.Chrome(service=Driver("/usr/bin/chromedriver"), options=options)
    page.set_page_load_timeout(WAIT)
    return page


def check(page, service):
    find = lambda css: page.find_element(By.CSS_SELECTOR, css)
    log = lambda: find("#log").text
    answer = lambda: find("#answer").text
    crop = lambda: service.call("getCurrentCameraCropArea")[1]["result"]["crops"][0]
    drawn = lambda css: [round(float(find(css).get_attribute(a)) / SCALE) for a in ("x", "y", "width", "height")]

    def until(condition, why=lambda: "timed out"):
        try:
            WebDriverWait(page, WAIT).until(lambda _: condition())
        except TimeoutException:
            raise AssertionError(why())

    def shows(c, *boxes, announced=True):  # drawn in boxes, and the last crop in the event log
        last = lambda: [l for l in log().split("\n") if "onCameraCropApplied" in l][-1:]
        until(lambda: not announced or last() == ["cb panel onCameraCropApplied crops=[{%d,%d,%d,%d}] frame=1280x720 "
                                                  "transition=0 duration=0 extra=0" % tuple(c)], last)
        for css in boxes:
            until(lambda: drawn(css) == [c[0], c[1], c[2] - c[0], c[3] - c[1]], lambda: (css, drawn(css), c))

    def enter(css, text):
        find(css).clear()
        find(css).send_keys(text)

    until(lambda: find("#link").text == "live" and "> setListener panel" in log())
    enter("#step", "100")
    for key, expected in [("+", [100, 56, 1180, 664]), (Keys.ARROW_LEFT, [0, 56, 1080, 664])]:
        find("body").send_keys(key)
        shows(expected, "#inforce", "#announced")
        assert crop() == expected, (crop(), expected)
    enter("#step", "30")
    find("[data-move=TILT_UP]").click()
    shows([0, 26, 1080, 634], "#inforce")
    saved = crop()

    enter("#preset", "5")  # a preset round trip: save 5, zoom out, recall 5
    find("#save").click()
    until(lambda: service.state()["presets"].get("5") == saved)
    shows(saved, "rect[data-preset='5']", announced=False)
    find("[data-move=ZOOM_OUT]").click()
    until(lambda: crop() != saved)
    find("#recall").click()
    until(lambda: answer() == "gotoPreset => true", answer)
    assert crop() == saved
    shows(saved, "#inforce")

    # Tracking on: a key press is refused, nothing announced (the scene's crop, none yet, is in force).
    Select(find("#mode")).select_by_value("2")
    until(lambda: service.state()["trackingMode"] == 2)
    until(lambda: 'cb panel cameraDeviceTrackingChange camera="0" mode=2' in log(), log)
    find("body").send_keys(Keys.ARROW_RIGHT)
    until(lambda: answer() == "moveCamera => false", answer)
    events = lambda: [l for l in log().split("\n") if not l.startswith("log ")][-2:]
    until(lambda: events() == ["> moveCamera 0 PAN_RIGHT 30", "=> false"], events)
    shows(saved, "#announced")
    Select(find("#mode")).select_by_value("0")
    until(lambda: service.state()["trackingMode"] == 0)

    service.call("setMetaData", {"camera": "0", "tag": "0x10001", "value": 2})  # the cache, a request
    find("#request").click()
    until(lambda: "aeExposureCompensation int32 [2]" in find("#requestOut").text, lambda: find("#requestOut").text)
    until(lambda: "aeExposureCompensation" in find("#cache").text, lambda: find("#cache").text)
    find("#recall").click()  # for the picture: zoomed in from the preset, library log lines hidden
    find("[data-move=ZOOM_IN]").click()
    shows([30, 43, 1050, 617])
    find("#showLog").click()


if __name__ == "__main__":
    service = Service(sys.argv[1])
    try:
        with tempfile.TemporaryDirectory() as profile:
            page = browser(profile)
            try:
                page.get(service.url)
                check(page, service)
            finally:
                page.save_screenshot(sys.argv[2])
                page.quit()
    finally:
        service.stop()
