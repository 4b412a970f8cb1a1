"""The browser view in headless Chromium: a row clicked, its text against the
export's, a zoom that narrows the statistics, tables that grow while the
page is open, the run stepped by the arrow key, a particle file drawn in its
tab; the study page sorted, kept over a reload, growing by itself, a dot of
its scatter opening that run with its particle files, and the back button
returning to it; a screenshot for a person.

    browser.py URL RUNDIR EXPORT_TEXT SCREENSHOT STUDY_URL
"""
import json
import os
import re
import struct
import sys
import tempfile
import time
import urllib.request
import zlib

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

url, rundir, export_text, screenshot, study_url = sys.argv[1:6]


def fail(why):
    print("FAIL: " + why, file=sys.stderr)
    sys.exit(1)


def png_pixels(data):
    """Width, height and rows of palette indices of an 8-bit PNG as the graphics library writes it."""
    at, packed, width, height = 8, b"", 0, 0
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", body[:10])
            if (depth, colour) != (8, 3):
                fail("the scatter is not an 8-bit palette PNG")
        elif kind == b"IDAT":
            packed += body
        at += 12 + size
    raw, rows, before = zlib.decompress(packed), [], bytearray(width)
    for y in range(height):
        kind, line = raw[y * (width + 1)], bytearray(raw[y * (width + 1) + 1:(y + 1) * (width + 1)])
        for x in range(width):
            a, b, c = line[x - 1] if x else 0, before[x], before[x - 1] if x else 0
            p = a + b - c
            guess = [0, a, b, (a + b) // 2,
                     a if abs(p - a) <= min(abs(p - b), abs(p - c)) else b if abs(p - b) <= abs(p - c) else c][kind]
            line[x] = (line[x] + guess) & 255
        rows.append(line)
        before = line
    return width, height, rows


def loaded(d, image):
    return d.execute_script("const i = document.getElementById(arguments[0]); return i.complete && i.naturalWidth > 0;",
                            image)


def record(z, value):
    """A fixed record of seven 12-column fields."""
    return "".join("%12s" % ("%.4E" % v) for v in (z, 0, 0, value, 1, 1, 0)) + "\n"


options = webdriver.ChromeOptions()
options.binary_location = "/usr/bin/chromium"
for flag in ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--window-size=1400,1000", "--user-data-dir=" + tempfile.mkdtemp(prefix="viewer-chromium-")):
    options.add_argument(flag)
driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
driver.set_page_load_timeout(30)
wait = WebDriverWait(driver, 10)
try:
    driver.get(url)
    button = wait.until(lambda d: [b for b in d.find_elements(By.CSS_SELECTOR, "#rows button")
                                   if b.text == "rms Beam Size"])
    button[0].click()

    def text():
        return driver.find_element(By.ID, "console").text

    def image_src():
        return driver.find_element(By.ID, "image").get_attribute("src") or ""

    def scatter_src():
        return driver.find_element(By.ID, "study-scatter").get_attribute("src") or ""

    wait.until(lambda d: "1:2.png" in image_src() and d.execute_script(
        "const i = document.getElementById('image'); return i.complete && i.naturalWidth > 0;"))
    wait.until(lambda d: "rms Beam Size" in text())
    if text().strip() != export_text.strip():
        fail("the page's text is not the export's:\n" + text())

    def points(t):
        return int(re.findall(r"points (\d+)", t)[0]) if "points" in t else None

    def maximum(t):
        return re.search(r"maximum:\s+(\S+)", t).group(1)

    whole = maximum(text())
    driver.find_element(By.ID, "zoom-low").send_keys("1")
    driver.find_element(By.ID, "zoom-high").send_keys("2")
    driver.find_element(By.ID, "zoom-apply").click()
    wait.until(lambda d: "zoom=1%3A2" in d.current_url and maximum(text()) != whole)

    # The tracker writes on: 50 records more, drawn without a click.
    before_text, before_src = text(), image_src()
    driver.find_element(By.ID, "zoom-reset").click()
    wait.until(lambda d: "zoom" not in d.current_url and text() != before_text)
    before_text = text()
    for kind in ("Xemit", "Yemit"):
        with open("%s/rfgun.%s.001" % (rundir, kind), "a") as table:
            for i in range(50):
                table.write(record(5.0 + 0.02 * (i + 1), 2.0 + 0.05 * i))
    start = time.time()
    WebDriverWait(driver, 5).until(lambda d: text() != before_text)
    if "4.4500D+00" not in text():
        fail("the text did not take the new records:\n" + text())
    print("redrawn %.1f s after the tables grew" % (time.time() - start))

    # The pointer: its coordinates in the plot's units, a drag zooms, a double click undoes it.
    image = driver.find_element(By.ID, "image")
    ActionChains(driver).move_to_element_with_offset(image, 0, 0).perform()
    wait.until(lambda d: re.match(r"z = \S+ +y = \S+", d.find_element(By.ID, "where").text))
    ActionChains(driver).move_to_element_with_offset(image, -100, 0).click_and_hold().move_by_offset(
        200, 0).release().perform()
    wait.until(lambda d: "zoom=" in d.current_url)
    ActionChains(driver).move_to_element(image).double_click().perform()
    wait.until(lambda d: "zoom=" not in d.current_url)

    driver.find_element(By.TAG_NAME, "body").send_keys(Keys.ARROW_RIGHT)
    wait.until(lambda d: "run=2" in d.current_url and "run=2" in image_src())
    wait.until(lambda d: d.execute_script(
        "const i = document.getElementById('image'); return i.complete && i.naturalWidth > 0;"))
    driver.save_screenshot(screenshot)

    # The particles tab: back to run 1, its first particle file picked and drawn.
    driver.find_element(By.TAG_NAME, "body").send_keys(Keys.ARROW_LEFT)
    wait.until(lambda d: "run=1" in d.current_url)
    [b for b in driver.find_elements(By.CSS_SELECTOR, "#tabs button") if b.text == "particles"][0].click()
    picked = wait.until(lambda d: d.find_elements(By.CSS_SELECTOR, "#files button"))[0]
    name = picked.text
    picked.click()
    wait.until(lambda d: "/api/particles/" in image_src() and name in text() and d.execute_script(
        "const i = document.getElementById('image'); return i.complete && i.naturalWidth > 0;"))

    # The study: it opens on its table, sorted by run downwards and on other
    # figures; a reload and the URL keep that.
    driver.get(study_url)
    wait.until(lambda d: len(d.find_elements(By.CSS_SELECTOR, "#study-table tbody tr")) == 3)
    wait.until(lambda d: loaded(d, "study-scatter"))
    if driver.find_element(By.ID, "project").text != "study":
        fail("the study's header names " + driver.find_element(By.ID, "project").text)

    def column(n):
        try:
            return [r.find_elements(By.TAG_NAME, "td")[n].text
                    for r in driver.find_elements(By.CSS_SELECTOR, "#study-table tbody tr")]
        except StaleElementReferenceException:  # drawn anew meanwhile
            return None

    def heading(title):
        return [h for h in driver.find_elements(By.CSS_SELECTOR, "#study-table th") if h.text.startswith(title)][0]

    heading("run").click()
    heading("run").click()
    Select(driver.find_element(By.ID, "study-y")).select_by_value("X_RMS")
    wait.until(lambda d: column(4) == ["3", "2", "1"] and "y=X_RMS" in scatter_src())
    for kept in ("sort=run", "desc=1", "y=X_RMS"):
        if kept not in driver.current_url:
            fail("the URL does not keep %s: %s" % (kept, driver.current_url))
    driver.refresh()
    wait.until(lambda d: column(4) == ["3", "2", "1"] and "y=X_RMS" in scatter_src() and loaded(d, "study-scatter"))

    # An optimiser writes another run in a folder of its own: the page shows it unasked.
    os.makedirs(rundir + "/study/opt")
    for kind in ("Xemit", "Yemit", "Zemit"):
        with open("%s/study/%s.%s.002" % (rundir, "rfgun", kind)) as table:
            text = table.read()
        with open("%s/study/opt/gun.%s.001" % (rundir, kind), "w") as table:
            table.write(text)
    start = time.time()
    WebDriverWait(driver, 8).until(lambda d: column(4) == ["3", "2", "1", "1"])
    print("study shown %.1f s after a run appeared" % (time.time() - start))

    # A dot of the scatter opens its run: mesh/gun,3 where the scatter's frame
    # places it, on a dot of the picture.
    wait.until(lambda d: loaded(d, "study-scatter"))
    token = re.search(r"token=(\w+)", study_url).group(1)
    with urllib.request.urlopen(scatter_src() + "&token=" + token) as answer:
        frame = json.loads(answer.headers["X-Viewer-Frame"])["panels"][0]
        picture = answer.read()
    with urllib.request.urlopen(study_url.split("?")[0] + "api/study?token=" + token) as answer:
        runs = json.load(answer)["runs"]
    figures = [r for r in runs if r["folder"] == "mesh"][0]["figures"]
    (left, right, top, bottom), (x1, x2, y1, y2) = frame["viewport"], frame["window"]
    px = left + (figures["NX_EMIT [pi mrad mm]"] - x1) / (x2 - x1) * (right - left)
    py = bottom - (figures["X_RMS [mm]"] - y1) / (y2 - y1) * (bottom - top)
    width, height, pixels = png_pixels(picture)
    if all(pixels[int(py) + j][int(px) + i] == pixels[0][0] for i in (-1, 0, 1) for j in (-1, 0, 1)):
        fail("no dot at (%.1f, %.1f) of the scatter" % (px, py))
    scatter = driver.find_element(By.ID, "study-scatter")
    shown = scatter.size
    ActionChains(driver).move_to_element_with_offset(
        scatter, int(px * shown["width"] / width - shown["width"] / 2),
        int(py * shown["height"] / height - shown["height"] / 2)).click().perform()

    def pick_row(d):  # the rows are drawn anew while the run loads
        try:
            found = [b for b in d.find_elements(By.CSS_SELECTOR, "#rows button") if b.text == "rms Beam Size"]
            return found and (found[0].click() or True)
        except StaleElementReferenceException:
            return False

    wait.until(pick_row)
    wait.until(lambda d: "study=" in image_src() and loaded(d, "image"))
    if "mesh/gun" not in driver.find_element(By.ID, "project").text:
        fail("the dot did not open mesh/gun: " + driver.find_element(By.ID, "project").text)

    # Its particles tab lists its own particle file.
    [b for b in driver.find_elements(By.CSS_SELECTOR, "#tabs button") if b.text == "particles"][0].click()
    picked = wait.until(lambda d: d.find_elements(By.CSS_SELECTOR, "#files button"))[0]
    if picked.text != "gun.0500.003":
        fail("the particles tab of mesh/gun,3 lists " + picked.text)
    picked.click()
    wait.until(lambda d: "/api/particles/0.png?study=" in image_src() and loaded(d, "image"))

    # Back: the study as it was left.
    driver.back()
    wait.until(lambda d: "study-tab" in d.find_element(By.TAG_NAME, "body").get_attribute("class"))
    wait.until(lambda d: column(4) == ["3", "2", "1", "1"] and "y=X_RMS" in scatter_src())
finally:
    driver.quit()
print("browser: ok")
