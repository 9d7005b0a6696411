"""Tables of PostgreSQL and SQLite databases: read in batches, changed in place, and filled.

SQLAlchemy connects and tells what tables are made of; rows go by way of the drivers themselves. It
needs SQLAlchemy, psycopg and pyarrow, but for :mod:`vantrel.databases.address`, which says so.
"""
