"""Random tables."""

from hypothesis import strategies as st

ITEMS = ("b", "bb", "a b", "é", "a,b", "{x}", "\u4e2d")


def rows(max_size=40, times=st.integers(0, 9)):
    """Generate rows of (entity, time, item)."""
    return st.lists(
        st.tuples(st.sampled_from("uvwxyz"), times, st.sampled_from(ITEMS[:5])),
        min_size=1, max_size=max_size,
    )


def transaction_file(path, rows):
    """Write the rows as a transaction file."""
    lines = ["who\twhen\twhat"] + [f"{e}\t{t}\t{i}" for e, t, i in rows]
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")
    return path
