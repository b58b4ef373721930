"""What ./dev mutate makes of a source: mutants.py TREE"""

import pathlib
import sys

# A statement or two, and all that becomes of it: what is changed and what stands there instead.
ROWS = [
    ("if (a < b) c = d + 2;", ["< <=", "+ -", "2 3", "2 1", "c=d+2; ;"]),
    ("if (!ready()) return true;", ["! ", "true false"]),
    ("if (ready) stop(1);", ["ready !(ready)", "stop(1); ;", "1 2", "1 0"]),
    ("const Guard guard(lock);", ["constGuardguard(lock); ;"]),
    ("const Guard guard(lock); use(guard);", ["use(guard); ;"]),
    ("return run(a, b);", ["returnrun(a,b); return;"]),
    ("x->y.z(1);", ["x->y.z(1); ;", "1 2", "1 0"]),
    ('say("ab\\n", \'c\');', ['say("ab\\n",\'c\'); ;', '"ab\\n" "ab"', "'c' '?'"]),
    ('say("");', ['say(""); ;', '"" "x"']),
    ("y = -60.5F;", ["y=-60.5F; ;", "- ", "60.5F 61.5F", "60.5F 59.5F"]),
    ("++n;", ["++n; ;", "++ --"]),
    # what no test could see, and what is no program
    ("int hours = 0, minutes = 0;", []),
    ("virtual void f() = 0;", []),
    ("T(const T&) = delete;", []),
    ("std::array<char, size>& text = *all;", []),
    ("// a < b\n#define F(x) x + 1\nstatic_assert(n == 16);", []),
    ('extern "C" int f(); using A = B<3>;', []),
]


def made_of(mutants_of, statements):
    text = f"void f() {{\n{statements}\n}}\n"
    return [
        f"{''.join(text[mutant.start : mutant.end].split())} {mutant.replacement}"
        for mutant in mutants_of("src/f.cpp", text)
    ]


def main(tree):
    sys.path.insert(0, str(pathlib.Path(tree, "tools/mutate")))
    from mutants import mutants_of

    wrong = 0
    for statements, expected in ROWS:
        made = made_of(mutants_of, statements)
        if sorted(made) != sorted(expected):
            print(f"{statements}: {sorted(made)}, should be {sorted(expected)}")
            wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
