"""Where the types of the parameters' attributes stand: _attributes.pyi, made when the package is built."""


class ParameterAttributes:
    """Every parameter of the applet as an attribute. The attributes themselves are looked up by the extension."""

    __slots__ = ()
