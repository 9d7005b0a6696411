"""Helpers of the models."""
