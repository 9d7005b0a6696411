"""How near a sample comes to real people: what single persons bear, and what is rare."""
