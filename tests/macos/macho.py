"""Reads a 64-bit Mach-O file, or each part of a universal one: load commands and code signature."""

import hashlib
import struct

PROCESSORS = {0x01000007: "x86_64", 0x0100000C: "arm64"}

_UNIVERSAL = 0xCAFEBABE
_THIN = 0xFEEDFACF
_LOAD_LIBRARY = {0xC, 0x80000018, 0x8000001F, 0x80000023}  # also weak, re-exported and upward
_CODE_SIGNATURE = 0x1D
_OLDEST_MACOS = 0x24
_BUILD_VERSION = 0x32

_SIGNATURE = 0xFADE0CC0
_CODE_DIRECTORY = 0xFADE0C02
_ADHOC = 0x2
_SHA256 = 2


def _text(data, offset):
    return data[offset : data.index(b"\0", offset)].decode()


def _version(number):
    return f"{number >> 16}.{number >> 8 & 0xFF}"


class Program:
    """One program for one processor."""

    def __init__(self, data):
        self.data = data
        magic, cpu, _, _, count, _, _, _ = struct.unpack_from("<8I", data)
        if magic != _THIN:
            raise ValueError("not a 64-bit Mach-O file")
        self.processor = PROCESSORS[cpu]
        self.libraries = []
        self.oldest_macos = None
        self.signature = None
        offset = 32
        for _ in range(count):
            command, size = struct.unpack_from("<2I", data, offset)
            self._read(command, offset)
            offset += size

    def _read(self, command, offset):
        if command in _LOAD_LIBRARY:
            (name,) = struct.unpack_from("<I", self.data, offset + 8)
            self.libraries.append(_text(self.data, offset + name))
        elif command == _OLDEST_MACOS:
            self.oldest_macos = _version(*struct.unpack_from("<I", self.data, offset + 8))
        elif command == _BUILD_VERSION:
            self.oldest_macos = _version(*struct.unpack_from("<I", self.data, offset + 12))
        elif command == _CODE_SIGNATURE:
            start, size = struct.unpack_from("<2I", self.data, offset + 8)
            self.signature = (start, self.data[start : start + size])

    def signature_problems(self):
        """What is wrong with the ad-hoc signature, as lines of text."""
        if self.signature is None:
            return ["no code signature"]
        start, blob = self.signature
        magic, _, count = struct.unpack_from(">3I", blob)
        slots = [struct.unpack_from(">2I", blob, 12 + 8 * index) for index in range(count)]
        directories = [offset for kind, offset in slots if kind == 0]
        if magic != _SIGNATURE or len(directories) != 1:
            return ["the code signature holds no code directory"]
        return self._directory_problems(blob[directories[0] :], start)

    def _directory_problems(self, directory, end):
        magic, _, _, flags, hashes, _, _, pages, limit = struct.unpack_from(">9I", directory)
        hash_size, hash_kind, _, page_bits = struct.unpack_from(">4B", directory, 36)
        page = 1 << page_bits
        if magic != _CODE_DIRECTORY or not flags & _ADHOC or hash_kind != _SHA256:
            return ["the signature is not an ad-hoc one with SHA-256"]
        if limit != end or pages != -(-limit // page):
            return [f"the signature covers {limit} bytes in {pages} pages, not all {end} before it"]
        problems = []
        for index in range(pages):
            content = self.data[index * page : min((index + 1) * page, limit)]
            expected = directory[hashes + index * hash_size : hashes + (index + 1) * hash_size]
            if hashlib.sha256(content).digest() != expected:
                problems.append(f"the signature does not match page {index}")
        return problems


def programs_in(data):
    """The programs of a file, universal or not."""
    magic, count = struct.unpack_from(">2I", data)
    if magic != _UNIVERSAL:
        return [Program(data)]
    parts = [struct.unpack_from(">5I", data, 8 + 20 * index) for index in range(count)]
    return [Program(data[offset : offset + size]) for _, _, offset, size, _ in parts]
