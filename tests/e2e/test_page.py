"""The HTML report in a browser: it opens from disk without a request, a script or a complaint, and an
accessibility checker finds nothing in it."""

import json
import shutil

import pytest
from axe_core_python.selenium import Axe
from conftest import CHURN, DONE, PENGUINS, program
from selenium import webdriver
from selenium.webdriver.common.by import By

ODD = "".join(f"{'<x>' if i % 2 else 'y&z'},{'pq'[i % 2]},{'rs'[i // 3 % 2]}\n" for i in range(12))
CASES = {
    # name: data, command, bars of each chart
    "two commands": (
        PENGUINS,
        "SELECTPRED species /CRITERIA SIZE=2 SHOWUNSELECTED=4 /PLOT SUMMARY;"
        " SELECTPRED body_mass_g /PRINT SUMMARY /PLOT SUMMARY;",
        [6, 6],
    ),
    "many predictors": (CHURN, "SELECTPRED churn /CRITERIA SHOWUNSELECTED=30 /PLOT SUMMARY", [19]),
    "one predictor": (PENGUINS, "SELECTPRED sex BY island /CRITERIA SHOWUNSELECTED=1 /PLOT SUMMARY", [1]),
    "all criteria": (
        PENGUINS,
        "SELECTPRED species BY island sex year /CRITERIA RANKING=LAMBDA SIZE=1 SHOWUNSELECTED=1"
        " /PLOT SUMMARY",
        [2],
    ),
    "nothing left": (None, "SELECTPRED target BY constant /PLOT SUMMARY", []),
    "markup in names": (
        None,
        'SELECTPRED target BY "<script>alert(1)</script>" "a ""b"" & c" constant'
        " /CRITERIA SHOWUNSELECTED=2 /PLOT SUMMARY",
        [2],
    ),
}  # fmt: skip


@pytest.fixture(scope="module")
def browser(tmp_path_factory):
    options = webdriver.ChromeOptions()
    for argument in (
        "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-background-networking",
        "--disable-component-update", "--disable-sync", "--window-size=1000,900",
        f"--user-data-dir={tmp_path_factory.mktemp('profile')}",
    ):  # fmt: skip
        options.add_argument(argument)
    options.binary_location = shutil.which("chromium") or ""
    options.set_capability("goog:loggingPrefs", {"performance": "ALL", "browser": "ALL"})
    driver = webdriver.Chrome(options, webdriver.ChromeService(shutil.which("chromedriver")))
    yield driver
    driver.quit()


@pytest.fixture(scope="module")
def pages(tmp_path_factory):
    folder = tmp_path_factory.mktemp("pages")
    odd = folder / "odd.csv"
    header = 'target,"<script>alert(1)</script>","a ""b"" & c",constant\n'
    odd.write_text(header + ODD.replace("\n", ",1\n"))
    made = {}
    for name, (data, command, _) in CASES.items():
        page = folder / f"{name.replace(' ', '-')}.html"
        done = program("run", "-c", command, "--data", data or odd, "--html", page, "--quiet")
        assert done.returncode == DONE, done.stderr
        made[name] = page
    return made


def opened(browser, page):
    """Opens a page; the requests that it made."""
    browser.get("about:blank")
    browser.get_log("performance"), browser.get_log("browser")
    browser.get(page.as_uri())
    events = [json.loads(entry["message"])["message"] for entry in browser.get_log("performance")]
    return [
        event["params"]["request"]["url"]
        for event in events
        if event["method"] == "Network.requestWillBeSent"
    ]


@pytest.mark.parametrize("name", CASES)
def test_it_asks_for_nothing_and_the_browser_has_no_complaint(browser, pages, name):
    requests = opened(browser, pages[name])
    assert requests == [pages[name].as_uri()]
    assert browser.get_log("browser") == []


def test_a_request_and_a_complaint_would_be_seen(browser, tmp_path):
    """The test above can fail: a page with a picture and a script that its policy forbids."""
    page = tmp_path / "page.html"
    page.write_text(
        "<!DOCTYPE html><meta http-equiv='Content-Security-Policy' content=\"script-src 'none'\">"
        "<title>x</title><img src='http://127.0.0.1:9/a.png' alt=''><script>alert(1)</script>"
    )
    assert "http://127.0.0.1:9/a.png" in opened(browser, page)
    assert browser.get_log("browser") != []


@pytest.mark.parametrize("name", CASES)
def test_a_chart_has_a_bar_for_each_predictor_that_is_shown(browser, pages, name):
    opened(browser, pages[name])
    charts = browser.find_elements(By.CSS_SELECTOR, "figure svg")
    assert [len(c.find_elements(By.CSS_SELECTOR, ".bar > rect")) for c in charts] == CASES[name][2]
    # The chart's data stand beside it as a table.
    figures = browser.find_elements(By.CSS_SELECTOR, "figure")
    assert [len(f.find_elements(By.CSS_SELECTOR, "tbody tr")) for f in figures] == CASES[name][2]


@pytest.mark.parametrize("scheme", ["light", "dark"])
@pytest.mark.parametrize("name", CASES)
def test_the_accessibility_checker_finds_nothing(browser, pages, name, scheme):
    feature = {"name": "prefers-color-scheme", "value": scheme}
    browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [feature]})
    opened(browser, pages[name])
    dark = browser.execute_script("return matchMedia('(prefers-color-scheme: dark)').matches")
    assert dark == (scheme == "dark")
    for details in browser.find_elements(By.CSS_SELECTOR, "details > summary"):
        details.click()
    found = Axe().run(browser)
    assert found["violations"] == []
    rules = {rule["id"] for rule in found["passes"]}
    assert {"color-contrast", "document-title", "html-has-lang", "landmark-one-main"} <= rules


def test_print_is_dark_on_white_whatever_the_scheme(browser, pages):
    features = [{"name": "prefers-color-scheme", "value": "dark"}]
    browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "print", "features": features})
    opened(browser, pages["two commands"])
    found = Axe().run(browser, options={"runOnly": ["color-contrast"]})
    browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "", "features": []})
    assert found["violations"] == []
    assert [rule["id"] for rule in found["passes"]] == ["color-contrast"]


@pytest.mark.parametrize("width", [320, 1600])
def test_it_never_scrolls_sideways_as_a_whole(browser, pages, width):
    size = {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False}
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", size)
    for page in pages.values():
        opened(browser, page)
        wide = browser.execute_script("return document.documentElement.scrollWidth")
        assert wide <= width, page
    browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})
