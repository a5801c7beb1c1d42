#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes tests of the examples in the documentation, so that none of them can go stale.

An example is a block fenced by ```cpp in a Markdown file, or @code to @endcode in a comment of a header. One with an
`int main` is a program of its own, and a block fenced by ```text right after it is what the program prints. A block of
nothing but #include and `using namespace` lines says how a file begins. Every other block is the body of a function
in a file that begins so, and with nothing else: in a Markdown file the block above it counts, in the headers the one
of tessel.h. #include lines of a function's own are moved to the top, into a file without other examples.
"""

import argparse
import re
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path


@dataclass
class Example:
    file: Path
    line: int  # of the first line of code
    code: list[str]
    output: list[str] | None = None
    beginning: list[str] | None = None  # of the file that contains a function

    @property
    def document(self):
        return re.sub(r"\W", "_", f"{self.file.parent.name}_{self.file.name}".lstrip("_"))

    @property
    def name(self):
        return f"{self.document}_{self.line}"

    @property
    def is_program(self):
        return any(re.match(r"int main\(", line) for line in self.code)

    @property
    def is_beginning(self):
        return all(re.fullmatch(r"#include .*|using namespace \w+;|", line) for line in self.code)


def markdown_blocks(lines):
    """The fenced blocks: language, number of the first line inside, lines inside, number of the line after."""
    language = None
    for number, line in enumerate(lines, 1):
        fence = re.match(r"( *)```(\S*)", line)
        if fence and language is None:
            language, indent, first, block = fence[2], len(fence[1]), number + 1, []
        elif fence:
            yield language, first, block, number + 1
            language = None
        elif language is not None:
            block.append(line[indent:] if line[:indent].isspace() else line)
    if language is not None:
        raise ValueError(f"line {first - 1}: this block has no end")


def markdown_examples(file, lines):
    program = end = None
    for language, first, block, after in markdown_blocks(lines):
        follows = program and not any(line.strip() for line in lines[end - 1 : first - 2])
        if language == "text" and follows:
            program.output = block
        program = None
        if language == "cpp":
            example = Example(file, first, block)
            if example.is_program:
                program, end = example, after
            yield example


def header_examples(file, lines):
    example = None
    for number, line in enumerate(lines, 1):
        comment = re.match(r"\s*/// ?(.*)", line)
        text = comment[1] if comment else None
        if example is None:
            if text is not None and re.match(r"\s*@code(\{\.cpp\})?$", text):
                example = Example(file, number + 1, [])
        elif text is None:
            raise ValueError(f"line {number}: this example has no @endcode")
        elif text.strip() == "@endcode":
            yield example
            example = None
        else:
            example.code.append(text)


def examples_of(file):
    lines = file.read_text().splitlines()
    find = markdown_examples if file.suffix == ".md" else header_examples
    try:
        return list(find(file, lines))
    except ValueError as error:
        sys.exit(f"{file}: {error}")


def with_beginnings(documents):
    """The examples but for the beginnings, which each function gets."""
    headers = [example for file, examples in documents for example in examples
               if file.suffix == ".h" and example.is_beginning]
    if len(headers) > 1:
        sys.exit(f"{headers[1].file}:{headers[1].line}: the headers' examples begin in one way")
    for file, examples in documents:
        beginning = headers[0].code if headers and file.suffix == ".h" else None
        for example in examples:
            if example.is_beginning:
                beginning = example.code
                continue
            if not example.is_program and beginning is None:
                sys.exit(f"{file}:{example.line}: no block above it says which headers this example includes")
            example.beginning = beginning
            yield example


def write(path, text):
    """Leaves a file alone that need not change, so that it is not compiled again."""
    if not path.exists() or path.read_text() != text:
        path.write_text(text)


def program_text(example):
    return "\n".join([f'#line {example.line} "{example.file}"', *example.code, ""])


def own_includes(example):
    return [line for line in example.code if line.startswith("#include")]


def functions_text(examples):
    lines = [*own_includes(examples[0]), *examples[0].beginning, ""]
    for example in examples:
        lines += [f"void {example.name}();", f"void {example.name}() {{", f'#line {example.line} "{example.file}"']
        lines += ["" if line in own_includes(example) else line for line in example.code]
        lines += ["}", ""]
    return "\n".join(lines)


def runner_text(functions):
    lines = ['#include "Example.h"', ""]
    for function in functions:
        lines += [f"void {function.name}();", f"TEST_F(Example, {function.name}) {{ ::{function.name}(); }}"]
    return "\n".join([*lines, ""])


def generate(folder, files):
    """Writes the sources of programs and functions, and what CMake needs to know of them."""
    folder.mkdir(parents=True, exist_ok=True)
    examples = list(with_beginnings([(file, examples_of(file)) for file in files]))
    programs = [example for example in examples if example.is_program]
    for program in programs:
        write(folder / f"{program.name}.cpp", program_text(program))
        output = folder / f"{program.name}.txt"
        if program.output is None:
            output.unlink(missing_ok=True)
        else:
            write(output, "\n".join([*program.output, ""]))

    functions = [example for example in examples if not example.is_program]
    sources = {}
    for function in functions:
        sources.setdefault(tuple(own_includes(function) + function.beginning), []).append(function)
    names = [f"functions_{number}_{examples[0].document}.cpp" for number, examples in enumerate(sources.values(), 1)]
    for name, together in zip(names, sources.values()):
        write(folder / name, functions_text(together))
    write(folder / "runner.cpp", runner_text(functions))
    write(folder / "examples.cmake", f"set(programs {' '.join(program.name for program in programs)})\n"
                                     f"set(functions {' '.join(names)})\n")


def run(program, output):
    """Runs a program, which must end well, and compares what it prints if the documentation says that."""
    result = subprocess.run([program], stdout=subprocess.PIPE, text=True)
    if result.returncode != 0:
        sys.exit(f"{result.stdout}{program}: ended with {result.returncode}")
    if output.exists() and result.stdout != (promised := output.read_text()):
        sys.exit(f"{program}: the documentation says that it prints\n{promised}but it prints\n{result.stdout}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    command = commands.add_parser("generate", help="write the examples' sources, and examples.cmake")
    command.add_argument("folder", type=Path, help="where to write to")
    command.add_argument("files", type=Path, nargs="+", help="Markdown files and headers")
    command = commands.add_parser("run", help="run a program and compare what it prints")
    command.add_argument("program", type=Path)
    command.add_argument("output", type=Path, help="what it must print; compared if there is such a file")
    arguments = parser.parse_args()
    if arguments.command == "generate":
        generate(arguments.folder, arguments.files)
    else:
        run(arguments.program, arguments.output)


if __name__ == "__main__":
    main()
