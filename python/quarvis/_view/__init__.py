"""The page that shows rules: its template, and the code that packs data into it."""
