"""Parts of the demo: a simulated station, its screen, and the checks of what the server made of the wire."""
