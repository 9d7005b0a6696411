"""Who is who in the tables of a run, and who becomes of each."""
