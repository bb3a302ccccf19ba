"""What a run raises beside what Python itself does."""
from __future__ import annotations


class BatchError(RuntimeError):
    """A run that can't begin or go on. What was measured before is in the store; the same call goes on from there."""


class StoreError(BatchError):
    """A store that can't be opened, read or written."""
