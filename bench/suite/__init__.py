"""What script/bench measures, and how it tells it."""
