"""Builds the wheel in the folder that cmake/make-python-package.sh fills."""

from pathlib import Path

from setuptools import Distribution, setup

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:
    from wheel.bdist_wheel import bdist_wheel

here = Path(__file__).parent


def text_of(name):
    return (here / name).read_text(encoding="utf-8")


class DistributionWithDll(Distribution):
    """What is for one platform goes to the wheel's root like an extension module."""

    def has_ext_modules(self):
        return True


class WindowsWheel(bdist_wheel):
    """A DLL for 64-bit Windows, which any Python 3 can use."""

    def get_tag(self):
        return "py3", "none", "win_amd64"


setup(
    name="orvel-graphic-cards-inventory",
    version=text_of("version.txt").strip(),
    license=text_of("licence.txt").splitlines()[0],
    license_files=["licenses/*"],
    description="Lists every graphics adapter of a Windows computer, each value with its source or the reason why it is missing",
    long_description=text_of("README.md"),
    long_description_content_type="text/markdown",
    keywords=["gpu", "graphics", "inventory", "windows", "video memory"],
    classifiers=["Operating System :: Microsoft :: Windows", "Typing :: Typed"],
    python_requires=">=3.9",
    packages=["orvel_graphic_cards_inventory"],
    package_data={"orvel_graphic_cards_inventory": ["py.typed", "*.dll"]},
    distclass=DistributionWithDll,
    cmdclass={"bdist_wheel": WindowsWheel},
)
