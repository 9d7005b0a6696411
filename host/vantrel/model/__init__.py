"""Models that learn from tables and sample new ones."""
