"""Finds tables and cells in a JSON report, by keys: labels and texts don't matter here."""

import math


def table(report: dict, identifier: str, command: int = -1) -> dict | None:
    """The table of this identifier, None when the command made none."""
    found = [t for t in report["commands"][command]["tables"] if t["id"] == identifier]
    assert len(found) <= 1
    return found[0] if found else None


def rows(table: dict, row: str, *columns: str, read=lambda cell: cell["value"]) -> dict:
    """{row path: {column path: value}}: row is the name of the row dimension, columns those of the
    column dimensions, whose paths are joined. Paths of one element are that element. read takes the
    value from a cell."""

    def short(path):
        return path[0] if len(path) == 1 else tuple(path)

    result = {}
    for cell in table["cells"]:
        keys = cell["keys"]
        column = [part for name in columns for part in keys[name]]
        result.setdefault(short(keys[row]), {})[short(column)] = read(cell)
    return result


def logarithm(cell: dict) -> float | None:
    """The natural logarithm of a cell's probability, None without one."""
    return -math.inf if cell.get("exactZero") else cell.get("lnP")


def summary(report: dict, command: int = -1, read=lambda cell: cell["value"]) -> dict:
    """{predictor: {statistic: value}} of the Predictor Summary, selected and unselected ones."""
    found = table(report, "PredictorSummary", command)
    if found is None:
        return {}
    columns = [d["name"] for d in found["dimensions"] if d["axis"] == "column"]
    columns.sort(key=lambda name: name != "Stat Type")
    return {path[-1]: values for path, values in rows(found, "Predictor", *columns, read=read).items()}


def messages(report: dict, command: int = -1) -> list[str]:
    """The keys of the command's messages."""
    return [message["key"] for message in report["commands"][command]["messages"]]
