"""What the end-to-end tests stand on: a virtual screen, the player as a process, content to show."""
