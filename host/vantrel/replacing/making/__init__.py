"""What made-up people are made of: names by place and gender, numbers, passwords."""
