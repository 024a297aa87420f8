/**
 * The data of a page: a JSON object in an inert script element. Its numbers are columns, packed into
 * one block of bytes: little-endian, each column begins at a multiple of 8, deflated with the header
 * of zlib, in base64. Names are in string tables, and columns have their places.
 */

/** How many bytes a number of a column takes, and whether it is floating-point. */
type ColumnType = "u8" | "u16" | "u32" | "f64";

/** Numbers of one column. */
export type Column = Uint8Array | Uint16Array | Uint32Array | Float64Array;

/** The words that sentences are made of. */
export interface Words {
  /** One history, such as "customer", */
  entity: string;
  /** several, */
  entities: string;
  /** and what an entity did with items, in the past: "had", "bought". */
  verb: string;
}

/** What the numbers of time mean. */
export interface TimeScale {
  /** Seconds in a unit of time; null when the unit is not known to be a length of the clock. */
  seconds: number | null;
  /** The time 0, in seconds since 1970-01-01 UTC; null when times are no dates. */
  origin: number | null;
  /** The number in the data that the time 0 stands for; told when times are no dates. */
  first: number;
  /** The unit in words, plural; used when `seconds` is null. */
  unit: string;
}

/** The object as it is in the page. */
export interface PageObject {
  format: number;
  title: string;
  words: Words;
  /** N, the number of all histories. */
  total: number;
  /** Whether counts were worked out from rounded measures that allow for several. */
  approximate: boolean;
  /** Whether the rules have an order; without times they have none. */
  ordered: boolean;
  /** Remarks for the reader, each a sentence. */
  notes: string[];
  /** The least count that was asked for; null when it is not known. */
  minCount: number | null;
  /** The frequent item sets; null when their number is not known. */
  itemSets: number | null;
  /** In units of time; 0 is the whole past, null is not known. */
  window: number | null;
  time: TimeScale;
  /** Of how many histories those in the page were drawn; null when they are all that matter. */
  sampledFrom: number | null;
  items: string[];
  entities: string[];
  columns: [name: string, type: ColumnType, length: number][];
  bytes: string;
}

/** The object with its columns unpacked. */
export interface PageData extends Omit<PageObject, "columns" | "bytes"> {
  columns: Map<string, Column>;
}

const FORMAT = 1;

/**
 * Reads the text of the script element.
 *
 * @throws Error when the text is of another format or was cut.
 */
export async function decodePage(text: string): Promise<PageData> {
  const { columns, bytes, ...rest } = JSON.parse(text) as PageObject;
  if (rest.format !== FORMAT) throw new Error(`The data have format ${String(rest.format)}.`);
  return { ...rest, columns: unpack(columns, await inflate(fromBase64(bytes))) };
}

function fromBase64(text: string): Uint8Array<ArrayBuffer> {
  const raw = atob(text);
  const bytes = new Uint8Array(raw.length);
  for (let i = 0; i < raw.length; ++i) bytes[i] = raw.charCodeAt(i);
  return bytes;
}

async function inflate(bytes: Uint8Array<ArrayBuffer>): Promise<ArrayBuffer> {
  const plain = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("deflate"));
  return new Response(plain).arrayBuffer();
}

function unpack(columns: PageObject["columns"], buffer: ArrayBuffer): Map<string, Column> {
  const found = new Map<string, Column>();
  let begin = 0;
  for (const [name, type, length] of columns) {
    const column = view(type, buffer, begin, length);
    found.set(name, column);
    begin += Math.ceil(column.byteLength / 8) * 8;
  }
  if (begin !== buffer.byteLength) throw new Error("The data are not whole.");
  return found;
}

function view(type: ColumnType, buffer: ArrayBuffer, begin: number, length: number): Column {
  switch (type) {
    case "u8":
      return new Uint8Array(buffer, begin, length);
    case "u16":
      return new Uint16Array(buffer, begin, length);
    case "u32":
      return new Uint32Array(buffer, begin, length);
    case "f64":
      return new Float64Array(buffer, begin, length);
  }
}
