// Bundles the sources into the template of the page: one file that lacks only the data.
//
//   node build.mjs [output]
//
// The same sources and the same lock file give the same bytes.
import { createHash } from "node:crypto";
import { mkdir, readdir, readFile, writeFile } from "node:fs/promises";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));
const output = resolve(process.argv[2] ?? join(here, "../python/quarvis/_view/template.html"));

const TARGET = ["chrome109", "firefox115", "safari16.4"];

async function bundle(entry) {
  const result = await build({
    absWorkingDir: here,
    entryPoints: [entry],
    bundle: true,
    minify: true,
    format: "iife",
    target: TARGET,
    charset: "utf8",
    legalComments: "none", // the page has the full licences
    metafile: true,
    write: false,
  });
  return { text: result.outputFiles[0].text.trim(), inputs: Object.keys(result.metafile.inputs) };
}

/** The packages whose code is in the bundle, with their licences. */
async function licencesOf(inputs) {
  const names = new Set(
    inputs.flatMap((path) => path.match(/^node_modules\/((?:@[^/]+\/)?[^/]+)/)?.[1] ?? []),
  );
  return Promise.all(
    [...names].sort().map(async (name) => {
      const folder = join(here, "node_modules", name);
      const { version, license } = JSON.parse(await readFile(join(folder, "package.json"), "utf8"));
      const file = (await readdir(folder)).find((entry) => /^licen[cs]e/i.test(entry));
      if (!file) throw new Error(`${name} has no licence file`);
      const text = await readFile(join(folder, file), "utf8");
      return { name: `${name} ${version} (${license})`, text: text.trim() };
    }),
  );
}

/** The source expression of a content security policy that allows exactly this inline text. */
function hashOf(text) {
  return `'sha256-${createHash("sha256").update(text).digest("base64")}'`;
}

/** Replaces the placeholders of the skeleton by texts, without blanks between tag and text. */
function fill(skeleton, texts) {
  return Object.entries(texts).reduce((page, [name, text]) => {
    const place = new RegExp(`\\s*@@${name}@@\\s*(?=<)|@@${name}@@`);
    if (!place.test(page)) throw new Error(`the skeleton lacks ${name}`);
    return page.replace(place, () => text);
  }, skeleton);
}

const skeleton = await readFile(join(here, "src/index.html"), "utf8");
const script = await bundle("src/main.ts");
const style = await bundle("src/style.css");
if (/<\/script|<!--/i.test(script.text) || /<\/style/i.test(style.text))
  throw new Error("a text would end its element");

const policy = [
  "default-src 'none'",
  `script-src ${hashOf(script.text)}`,
  `style-src ${hashOf(style.text)}`,
  "img-src blob:",
  "base-uri 'none'",
  "form-action 'none'",
].join("; ");

const page = fill(skeleton, {
  POLICY: policy,
  STYLE: style.text,
  LICENCES: JSON.stringify(await licencesOf(script.inputs)).replaceAll("<", "\\u003c"),
  SCRIPT: script.text,
});
if (
  !page.includes(`<style>${style.text}</style>`) ||
  !page.includes(`<script>${script.text}</script>`)
)
  throw new Error("the skeleton has something beside a text whose hash is in the policy");
await mkdir(dirname(output), { recursive: true });
await writeFile(output, page);
console.log(`${output}: ${page.length} characters, script ${script.text.length}`);
