"""Keeps what outlasts the process: model files, settings, and files written whole or not at all."""
