"""The one failure of a study that a user is told of: what is wrong, and the way out."""

from __future__ import annotations


class StudyError(Exception):
    """A sentence for the user; nobody wants to see where in the code it arose."""
