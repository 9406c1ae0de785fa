"""The installed tree, moved to where nobody built it for, as hosts find and use it."""

import os
import pathlib
import re
import subprocess

from commands import InFolder, run

ROOT = pathlib.Path(__file__).parents[2]
CHIME = ROOT / "examples" / "chime.wav"
STRICT = ["-std=c11", "-Wall", "-Wextra", "-Wpedantic", "-Werror"]
PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(hosts C CXX)
find_package(atdp 0.1 CONFIG REQUIRED)
add_executable(c_host {examples}/c_host.c)
target_link_libraries(c_host PRIVATE atdp::atdp)
add_executable(module_host {examples}/minimal_host.cpp)
target_link_libraries(module_host PRIVATE atdp::module_interface ${{CMAKE_DL_LIBS}})
file(WRITE ${{CMAKE_BINARY_DIR}}/module "${{atdp_MODULE}}")
"""


class Installed(InFolder):
    def setUp(self):
        super().setUp()
        run("cmake", "--install", os.environ["BUILD"], "--prefix", self.folder / "first")
        self.prefix = (self.folder / "first").rename(self.folder / "second")
        os.environ["PKG_CONFIG_PATH"] = str(next(self.prefix.glob("**/pkgconfig")))

    def pkg_config(self, *arguments):
        return run("pkg-config", *arguments, "atdp").decode().split()

    def test_program_finds_its_module(self):
        told = subprocess.run([self.prefix / "bin" / "atdp", "info", CHIME], capture_output=True)
        self.assertEqual((told.returncode, told.stderr), (0, b""))
        self.assertIn(b"AudioToolboxWavDecoder", told.stdout)

    def test_c_host_is_built_with_pkg_config(self):
        (libraries,) = self.pkg_config("--variable=libdir")
        (modules,) = self.pkg_config("--variable=moduledir")
        self.assertTrue((pathlib.Path(modules) / "AudioToolboxDecoderPlugin.so").is_file())
        host = self.folder / "c_host"
        run("cc", *STRICT, ROOT / "examples" / "c_host.c", "-o", host,
            *self.pkg_config("--cflags", "--libs"), f"-Wl,-rpath,{libraries}")
        self.assertIn(b"frames: 132300", run(host, CHIME))

    def test_hosts_are_built_with_cmake(self):
        project = self.folder / "project"
        project.mkdir()
        (project / "CMakeLists.txt").write_text(PROJECT.format(examples=ROOT / "examples"))
        build = self.folder / "build"
        run("cmake", "-S", project, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run("cmake", "--build", build)
        module = (build / "module").read_text()
        self.assertTrue(module.startswith(str(self.prefix)), module)
        self.assertIn(b"frames: 132300", run(build / "c_host", CHIME))
        self.assertIn(b"frames: 132300", run(build / "module_host", module, CHIME))

    def test_shells_and_manual_read_what_is_theirs(self):
        manual = self.prefix / "share" / "man" / "man1" / "atdp.1.gz"
        text = run("gzip", "-dc", manual).decode()
        share = self.prefix / "share"
        completions = [(share / "bash-completion" / "completions" / "atdp").read_text(),
                       (share / "zsh" / "vendor-completions" / "_atdp").read_text()]
        for command in ("describe", "probe", "info", "decode", "play", "edges"):
            told = run(self.prefix / "bin" / "atdp", command, "--help").decode()
            options = set(re.findall(r"--[a-z-]+", told)) - {"--help"}
            for option in options:
                self.assertIn("Fl -" + option[2:], text, command)
                for completion in completions:
                    self.assertIn(option, completion, command)
