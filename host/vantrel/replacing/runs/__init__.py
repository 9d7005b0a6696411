"""Runs on frames, files and databases, from what is asked to what is told."""
