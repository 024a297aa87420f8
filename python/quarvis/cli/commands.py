"""The subcommands of ``quarvis``."""

from __future__ import annotations

import sys
from pathlib import Path
from typing import Any

import click

import quarvis
from quarvis import plots
from quarvis.cli import frame
from quarvis.cli.ranking import read_rules, show_rules
from quarvis.writing import FORMATS, write_table, write_transactions

_INPUT = click.argument("input", type=click.Path(path_type=Path, dir_okay=False))
_OUTPUT = click.argument("output", type=click.Path(path_type=Path))
_FORCE = click.option("-f", "--force", is_flag=True, help="Replace files that are there.")


@click.group(context_settings={"help_option_names": ["-h", "--help"], "max_content_width": 100})
@click.version_option(quarvis.__version__, prog_name="quarvis")
def cli() -> None:
    """Mine association rules from histories: what newly follows what, within a window of time.

    Inputs are Parquet, Arrow, CSV, TSV and JSON lines, possibly compressed, whose columns are named
    by options; or, without --items, transaction files of quarvis-rules. The ending of an output's
    name tells its format.
    """


@cli.command()
@_INPUT
@_OUTPUT
@frame.data_options
@_FORCE
def prepare(input: Path, output: Path, force: bool, **options: Any) -> None:
    """Write INPUT as a transaction file of quarvis-rules to OUTPUT."""
    frame.check_output(output, force)
    histories = frame.read_input(input, options)
    unit = write_transactions(histories, output)
    click.echo(f"{histories.report()}\ntimes of file {unit}", err=True)


@cli.command()
@_INPUT
@click.pass_context
def check(context: click.Context, input: Path) -> None:
    """Report what in INPUT quarvis-rules would not read as intended; status 1 if anything."""
    findings = quarvis.check(input)
    click.echo(findings)
    context.exit(1 if findings else 0)


@cli.command()
@_INPUT
@_OUTPUT
@click.option("--item-sets", type=click.Path(path_type=Path), help="File for the item sets.")
@frame.data_options
@frame.mining_options
@_FORCE
def mine(
    input: Path, output: Path, item_sets: Path | None, force: bool, **options: Any
) -> None:
    """Mine INPUT and write the rules to OUTPUT.

    The ending of OUTPUT tells its format: .parquet, .arrow, .csv, .json, .jsonl, or .tsv for the
    rules file of quarvis-rules.
    """
    frame.check_output(output, force, frame.RULE_FORMATS)
    frame.check_output(item_sets, force, frame.RULE_FORMATS)
    mined = frame.run(frame.read_input(input, options), options)
    frame.write_rules(mined, output)
    if item_sets is not None:
        if item_sets.suffix.lower() == ".tsv":
            mined._write(item_sets, False, None)
        else:
            write_table(mined._item_set_table, item_sets)
    click.echo(mined.summary(), err=True)


@cli.command()
@click.argument("rules", type=click.Path(path_type=Path, dir_okay=False))
@click.option("--by", default="lift", show_default=True, help="Column to order by.")
@click.option("-n", "--top", type=click.IntRange(0), default=20, show_default=True,
              help="How many to show.")
@click.option("--ascending", is_flag=True, help="Least values first.")
def rank(rules: Path, by: str, top: int, ascending: bool) -> None:
    """Show the best rules of a file that `mine` or quarvis-rules wrote."""
    click.echo(show_rules(read_rules(rules), by, top, ascending), nl=False)


@cli.command()
@_INPUT
@click.argument("rule")
@click.option("-w", "--window", help="Length of time such as 30d, or a number.")
@click.option("-o", "--output", type=click.Path(path_type=Path),
              help="File for a row for each history.")
@frame.data_options
@_FORCE
def explain(
    input: Path, rule: str, window: str | None, output: Path | None, force: bool, **options: Any
) -> None:
    """Tell which histories of INPUT count for RULE, such as "bread => butter" or "{a,b} => c"."""
    frame.check_output(output, force, FORMATS)
    sides = _sides(rule)
    histories = frame.read_input(input, options)
    mined = frame.run(histories, {
        "window": window, "antecedents": (), "consequents": (), "max_items": 2,
        "min_count": max(len(histories), 1),
    })
    explanation = mined.explain(sides)
    click.echo(explanation)
    if output is not None:
        write_table(explanation.histories, output)


@cli.command()
@_INPUT
@_OUTPUT
@click.option("--kind", type=click.Choice(["scatter", "graph", "lags", "item"]), default="scatter",
              show_default=True, help="What to draw.")
@click.option("--rule", help="The rule whose lags to draw.")
@click.option("--item", help="The item whose rules to draw.")
@frame.data_options
@frame.mining_options
@_FORCE
def plot(
    input: Path, output: Path, kind: str, rule: str | None, item: str | None, force: bool,
    **options: Any,
) -> None:
    """Mine INPUT and draw the rules to OUTPUT: .svg, .png or .html."""
    frame.check_output(output, force, plots.FORMATS)
    if kind == "lags" and rule is None:
        raise click.UsageError("--kind lags needs --rule")
    if kind == "item" and item is None:
        raise click.UsageError("--kind item needs --item")
    mined = frame.run(frame.read_input(input, options), options)
    if kind == "lags":
        chart = plots.lags(mined, _sides(rule or ""))
    elif kind == "item":
        chart = plots.rules_of(mined, item or "")
    else:
        chart = plots.graph(mined) if kind == "graph" else plots.scatter(mined)
    plots.save(chart, output)


@cli.command()
@click.argument("rules", type=click.Path(path_type=Path, dir_okay=False))
@click.option("-o", "--output", type=click.Path(path_type=Path), required=True,
              help="File for the page.")
@click.option("--item-sets", type=click.Path(path_type=Path, dir_okay=False),
              help="The item-set file of quarvis-rules; makes names with commas unambiguous.")
@click.option("--histories", type=click.Path(path_type=Path, dir_okay=False),
              help="The input of the run; for lags and examples. Needs --window.")
@click.option("-w", "--window", help="Window of the run, such as 30d, or a number; 0 for none.")
@click.option("--unit", type=click.Choice(["days", "hours", "minutes", "seconds", "milliseconds"]),
              help="Unit of times that are numbers.")
@click.option("--dates", is_flag=True, help="Numeric times count from 1970; needs --unit.")
@click.option("--title", help="Title of the page.")
@click.option("--noun", default="history", help="Word for one entity, such as \"customer\".")
@click.option("--nouns", help="Word for several entities.")
@click.option("--verb", default="had", show_default=True,
              help="What entities did with items, such as \"bought\".")
@click.option("--no-names", is_flag=True, help="Number the entities instead of naming them.")
@frame.data_options
@_FORCE
def view(
    rules: Path, output: Path, histories: Path | None, window: str | None, no_names: bool,
    force: bool, **options: Any,
) -> None:
    """Write a page of RULES that opens anywhere: a rules file of quarvis-rules, or .parquet."""
    frame.check_output(output, force)
    own = ("item_sets", "unit", "dates", "title", "noun", "nouns", "verb")
    arguments = {name: options.pop(name) for name in own}
    if histories is not None:
        arguments["histories"] = frame.read_input(histories, options)
    elif options["items"]:
        raise click.UsageError("--items needs --histories, whose columns it names")
    if window is not None:
        arguments["window"] = (int(window) or None) if window.isdecimal() else window
    quarvis.view(rules, names=not no_names, **arguments).save(output, force=True)


def _sides(rule: str) -> tuple[list[str], list[str]]:
    """Return the sides of a rule in the tool's notation; braces hold items between commas."""
    left, arrow, right = rule.partition(" => ")
    if not arrow:
        raise click.UsageError(
            f"{rule!r} is not a rule: write 'bread => butter' or '{{a,b}} => c'"
        )

    def items(side: str) -> list[str]:
        braced = side.startswith("{") and side.endswith("}")
        return side[1:-1].split(",") if braced else [side]

    return items(left), items(right)


def main() -> None:
    """Run the command. An error prints one line; the status is 1, or 2 for wrong arguments."""
    try:
        with frame.one_line_errors():
            status = cli.main(standalone_mode=False)
        sys.exit(status if isinstance(status, int) else 0)
    except click.Abort:
        click.echo("Interrupted", err=True)
        sys.exit(130)
    except KeyboardInterrupt:
        click.echo("Interrupted", err=True)
        sys.exit(130)
    except click.ClickException as error:
        error.show()
        sys.exit(error.exit_code)
