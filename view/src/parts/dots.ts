/** One kind of dot: its radius and colour. */
interface Stencil {
  size: number;
  /** The coverage of each pixel by the dot, from 0 to 255. */
  cover: Uint8Array;
}

/** The dots to draw. */
export interface Dots {
  /** The position in pixels of the canvas; a dot at NaN is not drawn. */
  x: Float32Array;
  y: Float32Array;
  /** The place of each dot's radius in `radii`, and of its colour in `colours`. */
  radius: Uint8Array;
  colour: Uint8Array;
  radii: readonly number[];
  colours: readonly (readonly [red: number, green: number, blue: number])[];
  /** The opacity of all dots, from 0 to 1. */
  opacity: number;
}

/**
 * Draws dots into an image, in the given order. Each radius has one stencil, which is blended at
 * whole pixels. Tens of thousands of dots take a few milliseconds, without a graphics card.
 */
export function drawDots(image: ImageData, dots: Dots, order: Uint32Array): void {
  const { width, height, data } = image;
  const stencils = dots.radii.map(stencilOf);
  for (const dot of order) {
    const centerX = dots.x[dot]!;
    const centerY = dots.y[dot]!;
    const stencil = stencils[dots.radius[dot]!]!;
    const half = stencil.size >> 1;
    const left = Math.round(centerX) - half;
    const top = Math.round(centerY) - half;
    // The condition is written so that NaN counts as outside.
    if (!(left > -stencil.size && top > -stencil.size && left < width && top < height)) continue;
    const [red, green, blue] = dots.colours[dots.colour[dot]!]!;
    const firstRow = Math.max(0, -top);
    const endRow = Math.min(stencil.size, height - top);
    const firstColumn = Math.max(0, -left);
    const endColumn = Math.min(stencil.size, width - left);
    for (let row = firstRow; row < endRow; ++row) {
      let pixel = ((top + row) * width + left + firstColumn) * 4;
      let place = row * stencil.size + firstColumn;
      for (let column = firstColumn; column < endColumn; ++column, ++place, pixel += 4) {
        const cover = stencil.cover[place]!;
        if (cover === 0) continue;
        const alpha = (cover / 255) * dots.opacity;
        const below = data[pixel + 3]! / 255;
        const sum = alpha + below * (1 - alpha);
        const share = alpha / sum;
        data[pixel] = data[pixel]! + (red - data[pixel]!) * share;
        data[pixel + 1] = data[pixel + 1]! + (green - data[pixel + 1]!) * share;
        data[pixel + 2] = data[pixel + 2]! + (blue - data[pixel + 2]!) * share;
        data[pixel + 3] = sum * 255;
      }
    }
  }
}

const SAMPLES = 4;

function stencilOf(radius: number): Stencil {
  const half = Math.ceil(radius);
  const size = 2 * half + 1;
  const cover = new Uint8Array(size * size);
  for (let row = 0; row < size; ++row)
    for (let column = 0; column < size; ++column) {
      let inside = 0;
      for (let i = 0; i < SAMPLES; ++i)
        for (let j = 0; j < SAMPLES; ++j) {
          const x = column - half + (i + 0.5) / SAMPLES - 0.5;
          const y = row - half + (j + 0.5) / SAMPLES - 0.5;
          if (x * x + y * y <= radius * radius) ++inside;
        }
      cover[row * size + column] = Math.round((inside * 255) / (SAMPLES * SAMPLES));
    }
  return { size, cover };
}
