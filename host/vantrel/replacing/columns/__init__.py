"""What the columns of a table are: the people of its rows, their keys and attributes."""
