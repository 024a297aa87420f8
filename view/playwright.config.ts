import { defineConfig } from "@playwright/test";

// Uses the browser of the system; none is downloaded. Root can only run it without its sandbox.
const isRoot = process.getuid?.() === 0;

export default defineConfig({
  testDir: "tests",
  outputDir: "../build/view-tests",
  globalSetup: "./tests/pages.ts",
  workers: 1,
  timeout: 60_000,
  forbidOnly: true,
  reporter: [["list"]],
  use: {
    offline: true,
    viewport: { width: 1400, height: 1000 },
    launchOptions: {
      executablePath: process.env["CHROMIUM"] ?? "/usr/bin/chromium",
      args: isRoot ? ["--no-sandbox"] : [],
    },
  },
  projects: [
    { name: "unit", testMatch: "unit/*.spec.ts" },
    { name: "browser", testMatch: "browser/*.spec.ts" },
  ],
});
