"""Countries, locales and the generators of names that belong to them."""
