"""Shows the rules of a file, best first."""

from __future__ import annotations

import json
from pathlib import Path

import pyarrow as pa
import pyarrow.compute as pc

from quarvis.errors import DataError

#: The package's names for the columns of the tool's rules file.
_OF_TOOL = {
    "Count": "count", "A union S": "union_count", "Support": "ordered_support",
    "Confidence": "confidence", "Lift": "lift", "Conviction": "conviction",
    "Probability": "reverse_confidence", "Certainty": "certainty_odds",
}


def read_rules(path: Path) -> pa.Table:
    """Read a file of rules into a table whose first column `rule` has each rule as text."""
    import pyarrow.csv
    import pyarrow.feather
    import pyarrow.json
    import pyarrow.parquet

    ending = path.suffix.lower()
    with path.open("rb"):
        pass
    if ending == ".tsv":
        parse = pyarrow.csv.ParseOptions(delimiter="\t", quote_char=False)
        table = pyarrow.csv.read_csv(path, parse_options=parse)
        return table.rename_columns(
            ["rule" if n == "Rule" else _OF_TOOL.get(n, n) for n in table.column_names]
        )
    if ending == ".parquet":
        table = pyarrow.parquet.read_table(path)
    elif ending == ".arrow":
        table = pyarrow.feather.read_table(path)
    elif ending == ".csv":
        table = pyarrow.csv.read_csv(path)
    elif ending == ".jsonl":
        table = pyarrow.json.read_json(path)
    elif ending == ".json":
        table = pa.Table.from_pylist(json.loads(path.read_text()))
    else:
        raise DataError(f"the ending of {str(path)!r} is not that of a file of rules")
    if "antecedents" not in table.column_names or "consequents" not in table.column_names:
        raise DataError(f"{path} has no columns antecedents and consequents: is it a rules file?")
    rules = [
        f"{_side(left)} => {_side(right)}"
        for left, right in zip(
            table.column("antecedents").to_pylist(), table.column("consequents").to_pylist(),
            strict=True,
        )
    ]
    rest = table.drop_columns(["antecedents", "consequents"])
    return rest.add_column(0, "rule", pa.array(rules, pa.string()))


def show_rules(table: pa.Table, by: str, top: int, ascending: bool) -> str:
    """Return the first `top` rules as aligned text; the first column is the one ordered by."""
    names = table.column_names[1:]
    if by not in names:
        raise DataError(f"there is no column {by!r}; the columns are {', '.join(names)}")
    order = pc.sort_indices(
        table, sort_keys=[(by, "ascending" if ascending else "descending")]
    )
    shown = [by, *(n for n in ("confidence", "lift", "count") if n != by and n in names)]
    rows = table.select([*shown, "rule"]).take(order.slice(0, top)).to_pylist()
    lines = [[*shown, "rule"], *([_text(row[n]) for n in [*shown, "rule"]] for row in rows)]
    widths = [max(len(line[place]) for line in lines) for place in range(len(shown))]
    return "".join(
        "  ".join(cell.rjust(width) for cell, width in zip(line, widths, strict=False))
        + f"  {line[-1]}\n"
        for line in lines
    )


def _side(items: list[str] | str) -> str:
    listed: list[str] = json.loads(items) if isinstance(items, str) else items
    return listed[0] if len(listed) == 1 else "{" + ",".join(listed) + "}"


def _text(value: object) -> str:
    return f"{value:.4g}" if isinstance(value, float) else str(value)
