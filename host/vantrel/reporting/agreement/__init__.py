"""Whether what stands in one row goes together: in a sample as often as in the real table."""
