"""Run where no source tree is at hand: the installed package is whole."""

import quor

assert "site-packages" in quor.__file__, quor.__file__
result = quor.compile("A:MA(C,2);").run({"date": [20240102, 20240103], "close": [1.0, 2.0]})
assert result["A"].tolist()[1] == 1.5, result
print("The installed package works.")
