/** A child of an element. Text becomes a text node, never markup. */
export type Child = Node | string;

type Attributes = Record<string, string | number | boolean | null>;

/** Makes an HTML element. Attributes that are null or false are omitted; true becomes empty. */
export function element<Tag extends keyof HTMLElementTagNameMap>(
  tag: Tag,
  attributes: Attributes = {},
  ...children: Child[]
): HTMLElementTagNameMap[Tag] {
  const made = document.createElement(tag);
  setAttributes(made, attributes);
  made.append(...children);
  return made;
}

const SVG = "http://www.w3.org/2000/svg";

/** Makes an SVG element. */
export function svg<Tag extends keyof SVGElementTagNameMap>(
  tag: Tag,
  attributes: Attributes = {},
  ...children: Child[]
): SVGElementTagNameMap[Tag] {
  const made = document.createElementNS(SVG, tag);
  setAttributes(made, attributes);
  made.append(...children);
  return made;
}

export function setAttributes(made: Element, attributes: Attributes): void {
  for (const [name, value] of Object.entries(attributes)) {
    if (value === null || value === false) made.removeAttribute(name);
    else made.setAttribute(name, value === true ? "" : String(value));
  }
}

/** The element with this id, which must exist. */
export function byId(id: string): HTMLElement {
  const found = document.getElementById(id);
  if (!found) throw new Error(`The page lacks the element ${id}.`);
  return found;
}

/** A button that calls `act`. */
export function button(text: string, attributes: Attributes, act: () => void): HTMLButtonElement {
  const made = element("button", { type: "button", ...attributes }, text);
  made.addEventListener("click", act);
  return made;
}

/** A drop-down list with a label. */
export function choice(
  label: string,
  options: readonly { value: string; text: string }[],
  act: (value: string) => void,
): { label: HTMLLabelElement; select: HTMLSelectElement } {
  const select = element(
    "select",
    {},
    ...options.map(({ value, text }) => element("option", { value }, text)),
  );
  select.addEventListener("change", () => act(select.value));
  return {
    label: element("label", { class: "choice" }, element("span", {}, label), select),
    select,
  };
}

/** A name from the data, isolated so that its text direction does not affect its neighbours. */
export function nameOf(text: string, attributes: Attributes = {}): HTMLElement {
  return element("bdi", attributes, text);
}

/** Returns a function that runs `act` at the next frame, only once for all calls until then. */
export function oncePerFrame(act: () => void): () => void {
  let isWaiting = false;
  return () => {
    if (isWaiting) return;
    isWaiting = true;
    requestAnimationFrame(() => {
      isWaiting = false;
      act();
    });
  };
}

/** Announces a text to users of a screen reader. */
export function announce(text: string): void {
  byId("announcement").textContent = text;
}
