"""Keeps what outlasts the process: model files, settings, files that are written whole or not at all."""
