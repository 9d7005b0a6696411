"""Two tables of the same people for the tests of ``vantrel replace``, and how it is called."""

import pandas as pd

CUSTOMERS = (
    "id,sex,title,first_name,last_name,email,land,notes,points\r\n"
    '1,f,Mrs,Ann,Lee,ann.lee@web.de,GB,"Ann Lee called, twice",007\r\n'
    "2,m,,Hans,Meier,h.meier@gmx.de,DE,,\r\n"
    '3,m,Mr,Tom,"O\'Hara, Jr","",US,"ask Tom\nor not",1e3\r\n'
    ",f,,,,,FR,nobody,"
)
ORDERS = "order;id;full name;total\na;2;Hans Meier;3,50\nb;1;Ann Lee;7\nc;2;Hans Meier;0\n"
REPLACE = "replace customers.csv -o copy.csv --key id --secret s"
BOTH = "replace customers.csv orders.csv -o copy --key id --secret s"
PEOPLE = ["first_name", "last_name", "email"]


def read(path: str, **options: object) -> pd.DataFrame:
    return pd.read_csv(path, dtype=str, keep_default_na=False, **options)  # type: ignore[call-overload, no-any-return]  # options of any type
