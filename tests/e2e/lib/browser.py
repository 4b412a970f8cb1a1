"""The browser view in headless Chromium: a row clicked, its text against the
export's, a zoom that narrows the statistics, tables that grow while the
page is open, the run stepped by the arrow key, a particle file drawn in its
tab; the study page sorted and a run of it opened; a screenshot for a person.

    browser.py URL RUNDIR EXPORT_TEXT SCREENSHOT STUDY_URL
"""
import re
import sys
import tempfile
import time

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

url, rundir, export_text, screenshot, study_url = sys.argv[1:6]


def fail(why):
    print("FAIL: " + why, file=sys.stderr)
    sys.exit(1)


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

    # The study: it opens on its table; sorted by run, downwards; a row opens that run's plot.
    driver.get(study_url)
    wait.until(lambda d: len(d.find_elements(By.CSS_SELECTOR, "#study-table tbody tr")) == 4)
    wait.until(lambda d: d.execute_script(
        "const i = document.getElementById('study-scatter'); return i.complete && i.naturalWidth > 0;"))

    def column(n):
        return [r.find_elements(By.TAG_NAME, "td")[n].text
                for r in driver.find_elements(By.CSS_SELECTOR, "#study-table tbody tr")]

    header = [h for h in driver.find_elements(By.CSS_SELECTOR, "#study-table th") if h.text.startswith("run")][0]
    header.click()
    header = [h for h in driver.find_elements(By.CSS_SELECTOR, "#study-table th") if h.text.startswith("run")][0]
    header.click()
    wait.until(lambda d: column(4) == ["2", "2", "1", "1"])
    row = [r for r in driver.find_elements(By.CSS_SELECTOR, "#study-table tbody tr") if "mesh" in r.text][0]
    row.click()

    def pick_row(d):  # the rows are drawn anew while the run loads
        try:
            found = [b for b in d.find_elements(By.CSS_SELECTOR, "#rows button") if b.text == "rms Beam Size"]
            return found and (found[0].click() or True)
        except StaleElementReferenceException:
            return False

    wait.until(pick_row)
    wait.until(lambda d: "study=" in image_src() and d.execute_script(
        "const i = document.getElementById('image'); return i.complete && i.naturalWidth > 0;"))
    if "mesh/gun" not in driver.find_element(By.ID, "project").text:
        fail("the header does not name the study's run: " + driver.find_element(By.ID, "project").text)
finally:
    driver.quit()
print("browser: ok")
