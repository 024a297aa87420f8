"""Makes the pages that the tests open into build/view-pages, by real runs.

QUARVIS_TOOL names the tool; without it, that of the release build or of the debug build.
"""

import os
import subprocess
import sys
import warnings
from pathlib import Path

import quarvis

ROOT = Path(__file__).resolve().parents[2]
PAGES = ROOT / "build" / "view-pages"
BAGS = ROOT / "examples" / "bag-customers.tsv"
SHOP = ROOT / "examples" / "shop.tsv"
QUARTER = 90 * 86400

# Names that break careless pages. The tool quotes none of them; none may begin with a quote.
HOSTILE = [
    "</script><script>document.title='taken'</script>",
    "<img src=x onerror=\"document.title='taken'\">",
    "it's \"quoted\", with commas, twice",
    "a => b",
    "{braces}",
    "<!-- <script>",
    "&lt;b&gt;&amp;",
    "=HYPERLINK(1)",
    "مرحبا بالعالم",
    "עברית",
    "日本語の商品",
    "👩‍👩‍👧 family 🎁",
    "\u202eright to left override",
    "\u2028line separator",
    "long " * 2000,
    "__proto__",
]


def tool(transactions: Path, name: str, *options: str) -> tuple[Path, Path]:
    """Run the tool; return the rules file and the item-set file."""
    program = next(
        path for path in (
            os.environ.get("QUARVIS_TOOL", ""),
            str(ROOT / "build/release/bin/quarvis-rules"),
            str(ROOT / "build/debug/bin/quarvis-rules"),
        ) if path and Path(path).is_file()
    )
    rules, sets = PAGES / f"{name}.tsv", PAGES / f"{name}-sets.tsv"
    subprocess.run([program, *options, transactions, rules, sets], check=True, timeout=120,
                   stderr=subprocess.DEVNULL)
    return rules, sets


def command(rules: Path, sets: Path, *options: str) -> None:
    """Make a page by the command, as users do."""
    subprocess.run(
        [sys.executable, "-m", "quarvis.cli", "view", rules, "-o", rules.with_suffix(".html"),
         "--item-sets", sets, "--force", *options],
        check=True, timeout=300, stderr=subprocess.DEVNULL,
    )


def hostile() -> Path:
    """Write histories in which each name follows another one."""
    path = PAGES / "hostile-histories.tsv"
    lines = ["who\ttime\titems"]
    for who in range(12):
        lines += [
            f"{HOSTILE[who][:60]} {who}\t{10 * at + who % 3}\t{name}"
            for at, name in enumerate(HOSTILE) if (at + who) % 5
        ]
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")
    return path


def main() -> None:
    """Make all pages."""
    warnings.simplefilter("ignore", quarvis.QuarvisWarning)
    PAGES.mkdir(parents=True, exist_ok=True)
    bags = ["--histories", str(BAGS), "-w", "90d", "--unit", "seconds", "--dates",
            "--noun", "customer", "--verb", "took"]
    command(*tool(BAGS, "bags", "-c", "12", "-l", "1.5", "-o", "2", "-w", str(QUARTER)),
            "--title", "What bag customers take next", *bags)
    command(*tool(BAGS, "thousand", "-c", "7", "-o", "2", "-w", str(QUARTER)), *bags)
    command(*tool(BAGS, "none", "-c", "137", "-w", str(QUARTER)))
    command(*tool(SHOP, "one", "-c", "2", "-w", "2"), "--histories", str(SHOP), "-w", "2",
            "--unit", "days", "--noun", "customer", "--verb", "bought")
    path = hostile()
    command(*tool(path, "hostile", "-c", "3", "-o", "1"), "--histories", str(path), "-w", "0",
            "--title", HOSTILE[0])

    histories = quarvis.read_transactions(BAGS)
    mined = quarvis.mine(histories, min_count=5, max_items=5).top(100_000)
    assert len(mined) == 100_000
    page = mined.view(title="A hundred thousand rules", noun="customer", unit="seconds", dates=True)
    page.save(PAGES / "many.html", force=True)
    for page in sorted(PAGES.glob("*.html")):
        print(f"{page.name}: {page.stat().st_size / 1e6:.2f} MB")


main()
