"""Reads histories from files."""

from __future__ import annotations

import os
from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from pathlib import Path
from typing import Any

import numpy as np
import pyarrow as pa

from quarvis import _engine
from quarvis._columns import Codes, names_of
from quarvis._times import TimeScale
from quarvis.errors import DataError
from quarvis.histories import Columns, Histories, Missing

PathLike = str | os.PathLike[str]

_PACKED = (".gz", ".bz2", ".zst", ".lz4", ".br")


def read(
    path: PathLike, *, entity: str | None, time: str | None, items: str | Sequence[str],
    missing: Missing = "error", where: Any = None, **options: Any,
) -> Histories:
    """Read histories from a file in the format of its name's ending.

    Parameters
    ----------
    path : path
        A file whose name ends in .parquet, .arrow, .feather, .ipc, .csv, .tsv, .txt, .json, .jsonl
        or .ndjson. The text formats may be compressed (.gz, .bz2, .zst, .lz4, .br).
    entity, time, items, missing
        As for `Histories`.
    where : pyarrow.compute.Expression, optional
        The condition that rows must meet to be read, for example ``pc.field("Quantity") > 0``.
    **options
        Further options of `read_csv`, for .csv, .tsv and .txt.

    Returns
    -------
    Histories
        Its frames of results are PyArrow tables.

    Raises
    ------
    DataError
        When the ending is unknown, when the content does not have the format, or when the data
        cannot be mined as they are.
    OSError
        When the file cannot be read.
    """
    arguments: dict[str, Any] = {"entity": entity, "time": time, "items": items}
    arguments |= {"missing": missing, "where": where}
    ending = _ending(path)
    if ending == ".parquet":
        return read_parquet(path, **arguments, **options)
    if ending in (".arrow", ".feather", ".ipc"):
        return read_arrow(path, **arguments, **options)
    if ending in (".csv", ".tsv", ".txt"):
        return read_csv(path, **arguments, **options)
    if ending in (".json", ".jsonl", ".ndjson"):
        return read_json(path, **arguments, **options)
    raise DataError(
        f"the ending of {os.fspath(path)!r} is unknown: name the file .parquet, .arrow, .csv, "
        ".tsv or .jsonl, or use the function for its format"
    )


def read_parquet(
    path: PathLike, *, entity: str | None, time: str | None, items: str | Sequence[str],
    missing: Missing = "error", where: Any = None,
) -> Histories:
    """Read histories from a Parquet file; only the named columns are loaded.

    For the parameters, the result and the errors see `read`.
    """
    import pyarrow.dataset

    name = os.fspath(path)
    with _naming(name, "is it a Parquet file?"):
        dataset = pyarrow.dataset.dataset(name, format="parquet")
    return _of_dataset(dataset, entity, time, items, missing, where)


def read_arrow(
    path: PathLike, *, entity: str | None, time: str | None, items: str | Sequence[str],
    missing: Missing = "error", where: Any = None,
) -> Histories:
    """Read histories from an Arrow file (IPC, Feather version 2).

    For the parameters, the result and the errors see `read`.
    """
    import pyarrow.dataset

    name = os.fspath(path)
    with _naming(name, "is it an Arrow file?"):
        dataset = pyarrow.dataset.dataset(name, format="ipc")
    return _of_dataset(dataset, entity, time, items, missing, where)


def read_csv(
    path: PathLike, *, entity: str | None, time: str | None, items: str | Sequence[str],
    missing: Missing = "error", where: Any = None, delimiter: str | None = None,
    encoding: str | None = None, time_format: str | None = None, list_delimiter: str | None = None,
) -> Histories:
    """Read histories from a file of delimited text with a header line.

    Lines may end in LF or CR LF. Cells in double quotes may hold delimiters, line ends and doubled
    quotes. Entities and items are read as text, so "007" stays "007". For the result and the errors
    see `read`.

    Parameters
    ----------
    path : path
        The file. It is decompressed when its name ends in .gz, .bz2, .zst, .lz4 or .br.
    entity, time, items, missing, where
        As for `read`.
    delimiter : str, optional
        The character between cells; by default a tab for .tsv, otherwise a comma.
    encoding : str, optional
        The encoding of the text; by default UTF-16 if the file begins with its byte-order mark,
        otherwise UTF-8. A byte-order mark is skipped.
    time_format : str, optional
        The format of the times in the notation of strptime, such as "%d.%m.%Y %H:%M". By default
        times are integers, or dates or timestamps in ISO 8601 notation.
    list_delimiter : str, optional
        The character between the items of one cell, such as ";"; by default a cell is one item.
    """
    import pyarrow.csv

    name = os.fspath(path)
    if delimiter is None:
        delimiter = "\t" if _ending(path) == ".tsv" else ","
    named = [entity, *([items] if isinstance(items, str) else items)]
    convert = pyarrow.csv.ConvertOptions(
        column_types={column: pa.string() for column in named if column is not None},
        strings_can_be_null=True,
        null_values=[""],
        timestamp_parsers=[time_format] if time_format else None,
    )
    reading = pyarrow.csv.ReadOptions(encoding=encoding or _encoding_of(path))
    parse = pyarrow.csv.ParseOptions(delimiter=delimiter, newlines_in_values=True)
    with (_naming(name, "if it is not UTF-8, give its encoding=..., such as 'latin-1'"),
          pa.input_stream(name, compression="detect") as stream):
        table = pyarrow.csv.read_csv(stream, reading, parse, convert)
    _require_several_cells(name, table.column_names, delimiter)
    rows = table.num_rows
    table = _chosen(table, where)
    if list_delimiter is not None and isinstance(items, str) and items in table.column_names:
        import pyarrow.compute as pc

        at = table.column_names.index(items)
        table = table.set_column(at, items, pc.split_pattern(table.column(items), list_delimiter))
    histories = Histories(table, entity=entity, time=time, items=items, missing=missing)
    histories._left_out = rows - table.num_rows
    return histories


def read_json(
    path: PathLike, *, entity: str | None, time: str | None, items: str | Sequence[str],
    missing: Missing = "error", where: Any = None,
) -> Histories:
    """Read histories from a file of JSON lines, one object per line.

    Times in ISO 8601 notation are read as timestamps. For the parameters, the result and the errors
    see `read`.
    """
    import pyarrow.json

    name = os.fspath(path)
    with (_naming(name, "each line must be an object"),
          pa.input_stream(name, compression="detect") as stream):
        table = pyarrow.json.read_json(stream)
    chosen = _chosen(table, where)
    histories = Histories(chosen, entity=entity, time=time, items=items, missing=missing)
    histories._left_out = table.num_rows - chosen.num_rows
    return histories


def read_transactions(path: PathLike) -> Histories:
    """Read a transaction file of the command-line tool exactly as the tool reads it.

    The first line is a header. Each row has the entity, the time as an unsigned 32-bit number, and
    any number of items, separated by tabs. A time that is not a number reads as 0, and a row that
    lacks a cell takes it from the next row; `quarvis.check` reports such places.

    Raises
    ------
    OSError
        When the file cannot be opened.
    """
    with Path(path).open("rb"):
        pass
    read = _engine.read_transactions(os.fspath(path))
    names = read["item_names"]
    times = read["times"]
    origin = int(times.min()) if len(times) else 0
    last = int(times.max()) - origin if len(times) else 0
    scale = TimeScale(pa.uint32(), origin, last=last)
    return Histories._of(Columns(
        Codes(read["entities"], names_of(*read["entity_names"])), times - np.uint32(origin), scale,
        read["items"], names_of(*names), names, len(times), {}, "pyarrow",
    ))


def _ending(path: PathLike) -> str:
    suffixes = [suffix.lower() for suffix in Path(path).suffixes]
    if suffixes and suffixes[-1] in _PACKED:
        suffixes.pop()
    return suffixes[-1] if suffixes else ""


def _encoding_of(path: PathLike) -> str:
    name = os.fspath(path)
    with _naming(name, ""), pa.input_stream(name, compression="detect") as stream:
        begin = stream.read(2)
    return "utf-16" if begin in (b"\xff\xfe", b"\xfe\xff") else "utf8"


def _chosen(table: pa.Table, where: Any) -> pa.Table:
    if where is None:
        return table
    with _telling(where):
        return table.filter(where)


@contextmanager
def _naming(name: str, remedy: str) -> Iterator[None]:
    """Raise `DataError` that names the file when its content does not have its format."""
    try:
        yield
    except pa.ArrowInvalid as error:
        raise DataError(f"{name}: {str(error).splitlines()[0]}; {remedy}") from error
    except OSError as error:
        if error.errno is not None:
            raise
        # When decompression fails, Arrow's message does not name the file.
        raise DataError(f"{name}: {error}") from error


def _require_several_cells(name: str, header: list[str], delimiter: str) -> None:
    """Refuse a header of a single cell that contains a different delimiter."""
    if len(header) != 1:
        return
    other = max(",;|\t", key=header[0].count)
    if other != delimiter and other in header[0]:
        raise DataError(
            f"{name}: the header is one cell, {header[0]!r}: give delimiter={other!r}"
        )


@contextmanager
def _telling(where: Any) -> Iterator[None]:
    """Raise `DataError` that names the condition when it does not fit the columns."""
    try:
        yield
    except (pa.ArrowInvalid, pa.ArrowNotImplementedError, pa.ArrowTypeError) as error:
        reason = str(error).splitlines()[0]
        raise DataError(
            f"where={where} does not fit the columns of the file: {reason}"
        ) from error


def _of_dataset(
    dataset: Any, entity: str | None, time: str | None, items: str | Sequence[str],
    missing: Missing, where: Any,
) -> Histories:
    named = [entity, time, *([items] if isinstance(items, str) else items)]
    columns = list(dict.fromkeys(name for name in named if name is not None))
    if set(columns) <= set(dataset.schema.names):
        with _telling(where):
            table = dataset.to_table(columns=columns, filter=where)
    else:
        table = dataset.schema.empty_table()  # `Histories` then names the missing column
    histories = Histories(table, entity=entity, time=time, items=items, missing=missing)
    if where is not None:
        histories._left_out = dataset.count_rows() - table.num_rows
    return histories
