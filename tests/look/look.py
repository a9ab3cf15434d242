#!/usr/bin/env python3
"""Looks at what calib draws as a browser shows it: look.py --calib CALIB [--approve]

For each drawing, and each page at 400 and 1600 pixels, light and dark: no message on the console, no dialog,
no scrolling sideways, a name for everything that needs one, text that stands out from its ground,
labels that neither overlap nor leave their drawing, and pictures like the approved ones: of drawings
and of wide pages from top to bottom. With --approve the pictures become the approved ones.
"""

import argparse
import io
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

from PIL import Image, ImageChops

from browser import Browser

HERE = pathlib.Path(__file__).resolve().parent
INPUTS = HERE.parent / "calib" / "inputs"
HOSTILE = r'''
camera {
  name: "</text></svg></title><script>alert(1)</script>" model: "\" onload=alert(2) x=\""
  serial: "<img src=x onerror=alert(3)>"
  intrinsics { fx: 4 fy: 4 skew: 0 cx: 2 cy: 2 width: 4 height: 4 x_bin: "<style>*{display:none}</style>"
               sample_points { img_x: 1 img_y: 1 } }
  extrinsics { a: [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0] }
}
'''
# What is looked at is made of these, so that another test's input changes no picture.
RECORDS = ["base.BaseCalibrationProto", "board.CameraCalibration", "dome.PTZIntrinsics",
           "focus.FocusInfo", "rig.RobotCalibration", "spots.FocusCheckSetProto",
           "target.CameraCalibration"]
# Windows to look through. A drawing has its own size.
SIZES = {".html": [(400, 900), (1600, 900)], ".svg": [(820, 900)]}
TALLEST = 6000  # of a picture
# A label of a few letters that moves changes more pixels than that; other versions of a font's
# rasterizer change fewer as much.
DIFFERENT, MOST_DIFFERENT = 96, 80

NAMES = """[...document.querySelectorAll(
    'img, a, button, [tabindex], [role=img], [role=region], [role=group], [role=application], table')]
  .filter(e => !(e.getAttribute('alt') || e.getAttribute('aria-label') || e.textContent.trim() ||
                 (e.caption && e.caption.textContent)))
  .map(e => e.outerHTML.slice(0, 100))"""

# The contrast of text to its ground, as the web's guidelines have it. Numbers in cells stand on them.
CONTRAST = """(() => {
  const channels = color => (color.match(/[\\d.]+/g) || []).map(Number);
  const light = ([r, g, b]) => [r, g, b].map(c => c / 255)
    .map(c => c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
    .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
  const ground = element => {
    for (let e = element; e; e = e.parentElement) {
      const color = channels(getComputedStyle(e).backgroundColor);
      if (color.length === 3 || color[3] > 0) return color;
    }
    const rectangle = document.querySelector('svg > rect.b');
    return rectangle ? channels(getComputedStyle(rectangle).fill) : [255, 255, 255];
  };
  const weak = [];
  for (const e of document.querySelectorAll('text, p, li, td, th, a, h1, h2, caption, summary')) {
    if (!e.textContent.trim() || e.matches('.u, .v, .c')) continue;
    const style = getComputedStyle(e);
    const a = light(channels(e.matches('text') ? style.fill : style.color)), b = light(ground(e));
    const contrast = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
    if (contrast < 4.5) weak.push(contrast.toFixed(2) + ' ' + e.textContent.slice(0, 40));
  }
  return weak;
})()"""

# Texts of a drawing, by the room that they really take. Those of the rig in space may meet as it turns.
LABELS = """(() => {
  const found = [];
  for (const svg of document.querySelectorAll('svg:not(.turn)')) {
    const frame = svg.getBoundingClientRect();
    const texts = [...svg.querySelectorAll('text')].map(e => [e.textContent, e.getBoundingClientRect()]);
    const slack = 1.5 * frame.width / (svg.viewBox.baseVal.width || frame.width);
    texts.forEach(([text, box], i) => {
      if (box.left < frame.left - 1 || box.right > frame.right + 1) found.push('over the edge: ' + text);
      for (const [other, rest] of texts.slice(0, i)) {
        if (box.left + slack < rest.right && rest.left + slack < box.right &&
            box.top + 3 * slack < rest.bottom && rest.top + 3 * slack < box.bottom) {
          found.push('overlap: ' + text + ' and ' + other);
        }
      }
    });
  }
  return found;
})()"""


def make(calib, folder):
    """The pages and drawings to look at, by their names."""
    for name in RECORDS:
        shutil.copy(INPUTS / f"{name}.txtpb", folder)
    (folder / "hostile.RobotCalibration.txtpb").write_text(HOSTILE, encoding="utf-8")
    older = re.sub("k1: -0.3", "k1: -0.4",
                   (folder / "dome.PTZIntrinsics.txtpb").read_text(encoding="utf-8"))
    (folder / "older.PTZIntrinsics.txtpb").write_text(older, encoding="utf-8")
    spots = "".join(f'spots {{ name: "spot {i}" ok: {"false" if i % 5 == 0 else "true"} cutoff: 0.25 '
                    f"value_at_cutoff: 0.{i:02} bins: [1, 0.8, nan, 0.5, 0.{i:02}] }}\n"
                    for i in range(20, 40))
    (folder / "many.FocusCheckSetProto.txtpb").write_text(spots, encoding="utf-8")
    commands = {
        "rig.html": ["report", "rig.RobotCalibration.txtpb"],
        "target.html": ["report", "target.CameraCalibration.txtpb"],
        "hostile.html": ["report", "hostile.RobotCalibration.txtpb"],
        "two.html": ["report", "older.PTZIntrinsics.txtpb", "dome.PTZIntrinsics.txtpb"],
        "all.html": ["report", "."],
        "board.svg": ["plot", "board.CameraCalibration.txtpb"],
        "focus.svg": ["plot", "focus.FocusInfo.txtpb"],
        "many.svg": ["plot", "many.FocusCheckSetProto.txtpb"],
        "hostile.svg": ["plot", "hostile.RobotCalibration.txtpb"],
        "zoom.svg": ["plot", "dome.PTZIntrinsics.txtpb", "--against", "older.PTZIntrinsics.txtpb"],
    }
    for name, arguments in commands.items():
        # Not among the inputs before all are made: one of the pages is on the folder.
        made = subprocess.run([calib, *arguments], cwd=folder, check=True, stdout=subprocess.PIPE)
        commands[name] = made.stdout
    for name, content in commands.items():
        (folder / name).write_bytes(content)
    return list(commands)


def different_pixels(shown, approved):
    """How many pixels of two pictures are not alike; all, if the sizes differ."""
    if shown.size != approved.size:
        return shown.size[0] * shown.size[1]
    difference = ImageChops.difference(shown.convert("L"), approved.convert("L"))
    return sum(difference.histogram()[DIFFERENT:])


def look(browser, path, width, height, dark, approve):
    """What is wrong with a page or drawing."""
    browser.messages.clear()
    browser.open(path, width, height, dark)
    is_page = path.suffix == ".html"
    wrong = [f"labels: {label}" for label in browser.evaluate(LABELS)]
    wrong += [f"contrast: {text}" for text in browser.evaluate(CONTRAST)]
    if is_page:
        wrong += [f"no name: {element}" for element in browser.evaluate(NAMES)]
        wide = browser.evaluate("document.documentElement.scrollWidth")
        if wide > width:
            wrong.append(f"scrolls sideways: {wide} pixels")
        if browser.evaluate("document.scripts.length") != 1:
            wrong.append("has another script")
    turned = browser.evaluate("""(() => {
      const svg = document.querySelector('svg.turn');
      if (!svg) return true;
      const before = svg.innerHTML;
      svg.dispatchEvent(new KeyboardEvent('keydown', {key: 'ArrowLeft'}));
      const turns = svg.innerHTML !== before;
      svg.dispatchEvent(new KeyboardEvent('keydown', {key: 'ArrowRight'}));
      return turns;
    })()""")
    if not turned:
        wrong.append("the rig does not turn")
    wrong += browser.messages
    narrow_page = is_page and width < 1000
    if is_page and dark and not narrow_page:
        return wrong  # its colors are looked at in the narrow one
    shown = Image.open(io.BytesIO(browser.screenshot(height if narrow_page else TALLEST)))
    wide = "_wide" if is_page and not narrow_page else ""
    name = f"{path.stem}{path.suffix.replace('.', '_')}{wide}_{'dark' if dark else 'light'}.png"
    return wrong + compare(shown.convert("RGB"), HERE / "approved" / name, approve)


def compare(shown, approved, approve):
    """What is wrong with a picture; with approve, it becomes the approved one."""
    if approve:
        shown.quantize(64).save(approved, optimize=True)
        return []
    if not approved.exists():
        return [f"no approved picture {approved.name}"]
    pixels = different_pixels(shown, Image.open(approved).convert("RGB"))
    if pixels <= MOST_DIFFERENT:
        return []
    kept = pathlib.Path(tempfile.gettempdir()) / f"shown_{approved.name}"
    shown.save(kept)
    return [f"{pixels} pixels are not those of {approved}: see {kept}"]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--calib", required=True, type=os.path.abspath)
    parser.add_argument("--chromium", default="chromium")
    parser.add_argument("--approve", action="store_true")
    arguments = parser.parse_args()
    (HERE / "approved").mkdir(exist_ok=True)
    failures = looked = 0
    with tempfile.TemporaryDirectory() as name, Browser(arguments.chromium) as browser:
        folder = pathlib.Path(name)
        for drawn in make(arguments.calib, folder):
            for width, height in SIZES[pathlib.Path(drawn).suffix]:
                for dark in (False, True):
                    looked += 1
                    for wrong in look(browser, folder / drawn, width, height, dark, arguments.approve):
                        failures += 1
                        print(f"{drawn} ({width}, {'dark' if dark else 'light'}): {wrong}")
    print(f"looked at {looked} pages and drawings: {failures} findings")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
