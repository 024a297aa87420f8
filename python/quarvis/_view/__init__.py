"""The page that shows rules: its template, and what packs data into it."""
