/**
 * The data of a page: a JSON object in an inert script element. Numbers are in columns, which are
 * packed into one block of bytes, little-endian, each column at a multiple of 8 bytes. The block is
 * compressed by deflate with a zlib header and encoded in base64. Names are in string tables;
 * columns refer to them by place.
 */

/** The type of a column's numbers: the number of bits, and whether they are floating-point. */
type ColumnType = "u8" | "u16" | "u32" | "f64";

/** Numbers of one column. */
export type Column = Uint8Array | Uint16Array | Uint32Array | Float64Array;

/** The words of the sentences on the page. */
export interface Words {
  /** The word for one history, such as "customer". */
  entity: string;
  /** The word for several histories. */
  entities: string;
  /** What an entity did with items, in the past tense: "had", "bought". */
  verb: string;
}

/** The meaning of the times on the page. */
export interface TimeScale {
  /** The seconds in a unit of time; null if the length of the unit is unknown. */
  seconds: number | null;
  /** Time 0 in seconds since 1970-01-01 UTC; null if times are not dates. */
  origin: number | null;
  /** The value in the data that time 0 stands for; shown if times are not dates. */
  first: number;
  /** The unit in words, plural; used if `seconds` is null. */
  unit: string;
}

/** The JSON object in the page. */
export interface PageObject {
  format: number;
  title: string;
  words: Words;
  /** N, the number of all histories. */
  total: number;
  /** Whether counts were recovered from rounded measures, so that others are possible. */
  approximate: boolean;
  /** Whether the rules have an order; false without times. */
  ordered: boolean;
  /** Remarks for the reader, one sentence each. */
  notes: string[];
  /** The least count of the run; null if unknown. */
  minCount: number | null;
  /** The number of frequent item sets; null if unknown. */
  itemSets: number | null;
  /** The window in units of time; 0 means the whole past, null unknown. */
  window: number | null;
  time: TimeScale;
  /** The number of histories that those in the page are a sample of; null if they are complete. */
  sampledFrom: number | null;
  items: string[];
  entities: string[];
  columns: [name: string, type: ColumnType, length: number][];
  bytes: string;
}

/** The page object with its columns unpacked. */
export interface PageData extends Omit<PageObject, "columns" | "bytes"> {
  columns: Map<string, Column>;
}

const FORMAT = 1;

/**
 * Reads the text of the script element.
 *
 * @throws Error if the text has a different format version or is truncated.
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
