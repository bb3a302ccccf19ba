"""Sequences of records that are made when they are asked for, out of flat arrays."""
from __future__ import annotations

from collections.abc import Iterator
from typing import Any, Generic, Tuple, TypeVar, Union, overload

Record = TypeVar("Record")


class Collection(Generic[Record]):
    """A sequence whose `__slots__` are its arrays, in the order of its constructor's arguments; is pickled by them."""

    __slots__: Tuple[str, ...] = ()

    def __len__(self) -> int:
        raise NotImplementedError

    def _at(self, i: int) -> Record:
        """Record `i`, from 0 to the length."""
        raise NotImplementedError

    def __iter__(self) -> Iterator[Record]:
        return (self._at(i) for i in range(len(self)))

    @overload
    def __getitem__(self, index: int) -> Record: ...

    @overload
    def __getitem__(self, index: slice) -> list[Record]: ...

    def __getitem__(self, index: Union[int, slice]) -> Union[Record, list[Record]]:
        if isinstance(index, slice):
            return [self._at(i) for i in range(*index.indices(len(self)))]
        if not -len(self) <= index < len(self):
            raise IndexError(f"there are {len(self)} {self._name}")
        return self._at(index % len(self))

    _name = "records"
    """What there are, in the text of an IndexError."""

    def __reduce__(self) -> Tuple[Any, ...]:
        return type(self), tuple(getattr(self, name) for name in self.__slots__)
