"""Elements of lookup tables, checked."""

from __future__ import annotations

from typing import Any

import numpy as np
from numpy.typing import NDArray

_LARGEST = np.iinfo(np.uint32).max


def elements(name: str, count: int, value: Any) -> NDArray[np.uint32]:
    """A table's elements as the applet takes them, from any sequence or array of at most ``count`` whole numbers."""
    if isinstance(value, (str, bytes)) or not hasattr(value, "__len__"):
        raise TypeError(f"{name}: takes a sequence or an array of whole numbers, not {type(value).__name__}")
    if len(value) > count:
        raise ValueError(f"{name}: {len(value)} elements are too many, the table has {count}")
    array = np.asarray(value)
    if array.ndim != 1:
        raise ValueError(f"{name}: takes an array of one dimension, not of {array.ndim}")
    if array.size == 0:
        raise ValueError(f"{name}: there are no elements")
    if array.dtype.kind == "O":  # whole numbers beyond 64 bits
        raise OverflowError(f"{name}: elements must be whole numbers of 0 to {_LARGEST}")
    if array.dtype.kind not in "biu":
        raise TypeError(f"{name}: elements must be whole numbers, not {array.dtype}; round them first")
    if array.min() < 0 or array.max() > _LARGEST:
        raise OverflowError(f"{name}: elements must be whole numbers of 0 to {_LARGEST}")
    return np.ascontiguousarray(array, dtype=np.uint32)
