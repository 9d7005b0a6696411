"""Changes the columns that are not of people's names and addresses: each by an action of its own.

    action     what is to be done with a column, read from a text such as ``shift:180``
    decided    the actions of a table, checked against what its columns are
    changed    the new columns of a batch
    faked      values of Faker, one for each person and column
    shifted    dates, all of a person moved by as many days; ``dates`` has those in texts
    hashed     other values of the same form; ``permuted`` has those of texts, ``alphabets`` the
               letters that take each other's places, ``feistel`` the permutation itself

Only ``action`` can be imported without pyarrow.
"""
