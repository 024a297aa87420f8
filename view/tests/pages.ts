import { execFileSync } from "node:child_process";
import { join } from "node:path";

const ROOT = join(import.meta.dirname, "../..");

/** Makes the pages that the tests open, by real runs of the tool and of the package. */
export default function makePages(): void {
  const python = process.env["PYTHON"] ?? join(ROOT, "build/venv/bin/python");
  execFileSync(python, [join(import.meta.dirname, "make_pages.py")], {
    cwd: ROOT,
    stdio: ["ignore", "inherit", "inherit"],
  });
}
