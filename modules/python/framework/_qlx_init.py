"""Lays the streams of the interpreter over the host's console. Runs once, at the start.

Texts go through `_qlx`, whose functions carry bytes that are not UTF-8 as lone surrogates. What
scripts see are the io module's own text streams, with the encoding that the interpreter chose.
"""
import io
import os
import sys

import _qlx

# A long output goes in pieces: copies of it as a whole cost more than all else. A character that
# falls into two of them is whole again at the host, since bytes that are not UTF-8 are kept.
_PIECE = 1 << 16


class _Stream(io.RawIOBase):
    """What both directions share: the stream of the process behind it, where there is one."""

    def __init__(self, name, mode, descriptor):
        self.name = name
        self.mode = mode
        self._descriptor = descriptor

    def fileno(self):
        self._check_open()
        if self._descriptor is None:
            raise io.UnsupportedOperation("fileno")
        return self._descriptor

    def isatty(self):
        self._check_open()
        return self._descriptor is not None and os.isatty(self._descriptor)

    def seekable(self):
        try:
            self.tell()
        except OSError:
            return False
        return True

    def seek(self, position, whence=0):
        return os.lseek(self.fileno(), position, whence)

    def tell(self):
        return os.lseek(self.fileno(), 0, os.SEEK_CUR)

    def truncate(self, size=None):
        size = self.tell() if size is None else size
        os.ftruncate(self.fileno(), size)
        return size

    def _check_open(self):
        if self.closed:
            raise ValueError("I/O operation on closed file")


class _Buffer(io.BufferedWriter):
    """A text stream asks for `closed` at each write: an attribute is far quicker than the property."""

    closed = False

    def close(self):
        try:
            super().close()
        finally:
            self.closed = True


class _Output(_Stream):
    def __init__(self, name, descriptor, write):
        super().__init__(name, "wb", descriptor)
        self._write = write

    def writable(self):
        return True

    def write(self, data):
        self._check_open()
        with memoryview(data) as view:
            size = view.nbytes
            if size <= _PIECE:
                self._write(str(view, "utf-8", "surrogateescape"))
                return size
            with view.cast("B") as octets:
                for start in range(0, size, _PIECE):
                    self._write(str(octets[start:start + _PIECE], "utf-8", "surrogateescape"))
            return size


class _Input(_Stream):
    def __init__(self, name, descriptor, read):
        super().__init__(name, "rb", descriptor)
        self._read = read

    def readable(self):
        return True

    def readinto(self, buffer):
        self._check_open()
        data = self._chunk(len(buffer))
        buffer[:len(data)] = data
        return len(data)

    def _chunk(self, size):
        try:
            return self._read(size).encode("utf-8", "surrogateescape")
        except RuntimeError:
            # The host asks its user on the main thread only; a stream of the process can be read by any.
            if self._descriptor is None:
                raise
            return os.read(self._descriptor, size)


def _text(raw, old):
    """A text stream over `raw` in the manner of the one that it replaces."""
    if isinstance(raw, _Input):
        return io.TextIOWrapper(io.BufferedReader(raw), old.encoding, old.errors)
    if isinstance(getattr(old, "buffer", None), io.RawIOBase):  # not buffered
        return io.TextIOWrapper(raw, old.encoding, old.errors, write_through=True, line_buffering=old.line_buffering)
    return io.TextIOWrapper(_Buffer(raw), old.encoding, old.errors, line_buffering=old.line_buffering)


def _connect(name, make):
    old = getattr(sys, name)
    if old is None:
        # The process was started without this stream.
        if _qlx.process_streams:
            return
        old = io.TextIOWrapper(io.BytesIO(), "utf-8", "backslashreplace", line_buffering=True)
    new = _text(make(_qlx.process_streams), old)
    new.mode = "r" if name == "stdin" else "w"
    setattr(sys, name, new)
    setattr(sys, "__%s__" % name, new)


_connect("stdout", lambda real: _Output("<stdout>", 1 if real else None, _qlx.stdout_write))
_connect("stderr", lambda real: _Output("<stderr>", 2 if real else None, _qlx.stderr_write))
_connect("stdin", lambda real: _Input("<stdin>", 0 if real else None, _qlx.stdin_read))
