# Makes "Crypto" an alias of pycryptodome's "Cryptodome", submodules included.
import importlib
import importlib.abc
import importlib.util
import sys

class _Alias(importlib.abc.MetaPathFinder, importlib.abc.Loader):
    def find_spec(self, fullname, path, target=None):
        if fullname.startswith("Crypto."):
            return importlib.util.spec_from_loader(fullname, self)
        return None
    def create_module(self, found):
        return importlib.import_module("Cryptodome" + found.name[len("Crypto"):])
    def exec_module(self, module):
        pass

sys.meta_path.insert(0, _Alias())
from Cryptodome import *  # noqa
