"""How often the tests do to the player what goes wrong in a shop."""

import os


def times(few, many):
    """Few in every run; as many as are promised with FAULTS=many in the environment."""
    return many if os.environ.get("FAULTS") == "many" else few
