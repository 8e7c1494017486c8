"""Elements of lookup tables, checked."""

from __future__ import annotations

from typing import Any

import numpy as np
from numpy.typing import NDArray

_LARGEST = np.iinfo(np.uint32).max


def elements(name: str, count: int, whole: bool, value: Any) -> NDArray[np.uint32]:
    """A table's elements as the applet takes them, from any sequence or array of whole numbers: ``count`` of them for
    the ``whole`` table, else at most as many."""
    try:
        if isinstance(value, (str, bytes)):
            raise TypeError
        given = len(value)
    except TypeError:
        raise TypeError(
            f"{name}: takes a sequence or an array of whole numbers, not {type(value).__name__}"
        ) from None
    if given > count:
        raise ValueError(f"{name}: {given} elements are too many, the table has {count}")
    try:
        array = np.asarray(value)
    except ValueError:
        raise ValueError(f"{name}: takes a sequence of whole numbers, not one of sequences") from None
    if array.ndim != 1:
        raise ValueError(f"{name}: takes an array of one dimension, not of {array.ndim}")
    if array.size == 0:
        raise ValueError(f"{name}: there are no elements")
    if whole and array.size < count:
        raise ValueError(f"{name}: the table has {count} elements, not {array.size}; set_elements sets some of them")
    if array.dtype.kind == "O":  # whole numbers beyond 64 bits, or anything else
        for element in array:
            if not isinstance(element, (int, np.integer)):
                raise TypeError(f"{name}: elements must be whole numbers, not {type(element).__name__}")
        raise OverflowError(f"{name}: elements must be whole numbers of 0 to {_LARGEST}")
    if array.dtype.kind not in "biu":
        raise TypeError(f"{name}: elements must be whole numbers, not {array.dtype}; round them first")
    if array.min() < 0 or array.max() > _LARGEST:
        raise OverflowError(f"{name}: elements must be whole numbers of 0 to {_LARGEST}")
    return np.ascontiguousarray(array, dtype=np.uint32)
