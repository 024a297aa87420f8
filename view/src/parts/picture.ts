import { button, element } from "../dom";
import { theme } from "../theme";

/** A picture that can be saved. It is self-contained, with all colours as attributes. */
export interface Picture {
  /** The name of the file, without ending. */
  name: string;
  /** Makes the picture in its current state; null if there is nothing to show. */
  make(): SVGSVGElement | null;
}

/** Two buttons that save a picture as SVG and PNG. */
export function saveButtons(picture: Picture): HTMLElement {
  const save = (ending: "svg" | "png"): HTMLButtonElement =>
    button(
      ending.toUpperCase(),
      { class: "small", title: `Save this picture as ${ending}` },
      () => {
        const made = picture.make();
        if (!made) return;
        const text = serialize(made);
        const name = `${picture.name}.${ending}`;
        if (ending === "svg") saveFile(name, "image/svg+xml", text);
        else void rasterize(text, made).then((blob) => saveBlob(name, blob));
      },
    );
  return element(
    "span",
    { class: "save", role: "group", "aria-label": "Save the picture" },
    save("svg"),
    save("png"),
  );
}

/** Offers a text as a file to save. */
export function saveFile(name: string, type: string, text: string): void {
  saveBlob(name, new Blob([text], { type: `${type};charset=utf-8` }));
}

function saveBlob(name: string, blob: Blob): void {
  const address = URL.createObjectURL(blob);
  const link = element("a", { href: address, download: name });
  link.click();
  setTimeout(() => URL.revokeObjectURL(address), 10_000);
}

function serialize(picture: SVGSVGElement): string {
  const copy = picture.cloneNode(true) as SVGSVGElement;
  for (const name of ["class", "style", "id", "tabindex", "role"]) copy.removeAttribute(name);
  for (const part of copy.querySelectorAll("[tabindex]")) part.removeAttribute("tabindex");
  copy.setAttribute("xmlns", "http://www.w3.org/2000/svg");
  copy.setAttribute("font-family", "system-ui, sans-serif");
  const background = document.createElementNS("http://www.w3.org/2000/svg", "rect");
  const box = copy.viewBox.baseVal;
  const values = { x: box.x, y: box.y, width: box.width, height: box.height };
  for (const [name, value] of Object.entries(values)) background.setAttribute(name, String(value));
  background.setAttribute("fill", theme().background);
  copy.prepend(background);
  return `<?xml version="1.0" encoding="UTF-8"?>\n${new XMLSerializer().serializeToString(copy)}\n`;
}

const SHARPNESS = 2;

async function rasterize(text: string, picture: SVGSVGElement): Promise<Blob> {
  const box = picture.viewBox.baseVal;
  const image = new Image();
  image.src = URL.createObjectURL(new Blob([text], { type: "image/svg+xml" }));
  await image.decode();
  const canvas = element("canvas", {
    width: box.width * SHARPNESS,
    height: box.height * SHARPNESS,
  });
  canvas.getContext("2d")!.drawImage(image, 0, 0, canvas.width, canvas.height);
  URL.revokeObjectURL(image.src);
  return new Promise((resolve, reject) => {
    canvas.toBlob((blob) => (blob ? resolve(blob) : reject(new Error("no picture"))), "image/png");
  });
}
