"""Tests the mutants that ./dev mutate makes of a source: mutants.py TREE"""

import pathlib
import sys

# Statements, and every mutant of them: the text that is changed and its replacement.
ROWS = [
    ("if (a < b) c = d + 2;", ["< <=", "+ -", "2 3", "2 1", "c=d+2; ;"]),
    ("if (!ready()) return true;", ["! ", "true false"]),
    ("if (ready) stop(1);", ["ready !(ready)", "stop(1); ;", "1 2", "1 0"]),
    ("const Guard guard(lock);", ["constGuardguard(lock); ;"]),
    ("const Guard guard(lock); use(guard);", ["use(guard); ;"]),
    ("const SemaphoreGuard guard(lock);", ["constSemaphoreGuardguard(lock); ;"]),
    ("const MutexLock lock(mutex);", []),  # lint finds this
    ("Semaphore lock{1, 1, false};", ["1 2", "1 0", "false true"]),  # not the maximum
    ("return run(a, b);", ["returnrun(a,b); return;"]),
    ("x->y.z(1);", ["x->y.z(1); ;", "1 2", "1 0"]),
    ('say("ab\\n", \'c\');', ['say("ab\\n",\'c\'); ;', '"ab\\n" "ab"', "'c' '?'"]),
    ('say("");', ['say(""); ;', '"" "x"']),
    ("y = -60.5F;", ["y=-60.5F; ;", "- ", "60.5F 61.5F", "60.5F 59.5F"]),
    ("++n;", ["++n; ;", "++ --"]),
    # changes that no test can notice, and non-code
    ("int hours = 0, minutes = 0;", []),
    ("va_end(arguments);", []),
    ("virtual void f() = 0;", []),
    ("T(const T&) = delete;", []),
    ("std::array<char, size>& text = *all;", []),
    ("// a < b\n#define F(x) x + 1\nstatic_assert(n == 16);", []),
    ('extern "C" int f(); using A = B<3>;', []),
    ("class A { void f() CLOCK_REQUIRES(lock); int m CLOCK_GUARDED_BY(lock); };", []),
    ("class A { int g() const { return m; } int h(int number); };", []),
]

FUNCTION = "void f() {\n  go(1,\n     2);\n  if (a < b) return;\n  go(3);\n}\n"
INDENTED = FUNCTION.replace("\n ", "\n   ")
OTHER = "int g() {\n  return a + 4;\n}\n"
AGAIN = FUNCTION.replace("f()", "h()")
# Edits around the function that must not change the order of its mutants.
EDITS = [f"// a\n\n{FUNCTION}", OTHER + FUNCTION, FUNCTION + OTHER, FUNCTION + AGAIN, INDENTED]


def changes_of(mutants_of, statements):
    text = f"void f() {{\n{statements}\n}}\n"
    return [
        f"{''.join(text[mutant.start : mutant.end].split())} {mutant.replacement}"
        for mutant in mutants_of("src/f.cpp", text)
    ]


def order_of(mutants, text, seed=1):
    """The mutants of f() in their order."""
    start = text.index("void f()")
    ordered = mutants.in_order(mutants.mutants_of("src/f.cpp", text), seed)
    return [mutant.change for mutant in ordered if start < mutant.start < text.index("}", start)]


def order_faults(mutants):
    usual = order_of(mutants, FUNCTION)
    for edited in EDITS:
        if order_of(mutants, edited) != usual:
            yield f"{edited!r}: changes the order of the mutants"
    if order_of(mutants, FUNCTION, seed=2) == usual:
        yield "two seeds give the same order"


def main(tree):
    sys.path.insert(0, str(pathlib.Path(tree, "tools/mutate")))
    import mutants
    from mutants import mutants_of

    wrong = 0
    for line in order_faults(mutants):
        print(line)
        wrong += 1
    for statements, expected in ROWS:
        made = changes_of(mutants_of, statements)
        if sorted(made) != sorted(expected):
            print(f"{statements}: {sorted(made)}, should be {sorted(expected)}")
            wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
