# The two commands: `make test` and `make demo`. Both install what is missing,
# configure, build and run; tests, benchmarks and the demo run in a network
# namespace that has only loopback.

JOBS ?= 2
BUILD ?= build
ASAN_BUILD ?= build-asan
BENCH_BUILD ?= build-bench
FUZZ_BUILD ?= build-fuzz
COVERAGE_BUILD ?= build-coverage
DOCS_BUILD ?= build-docs
FUZZ_SECONDS ?= 30
PORT_CHECK_BUILD ?= build-port-check
empty :=
space := $(empty) $(empty)
# The architectures whose cross builds `make bench` makes (or brings up to
# date) for the size table; empty: only those already built are shown.
BENCH_CROSS ?= aarch64 armhf
FUZZERS := $(basename $(notdir $(wildcard tests/fuzz/*Fuzz.cpp)))
NETNS := scripts/netns-run

.PHONY: all deps build build-asan test test-normal test-asan port-check demo bench cross-aarch64 \
	cross-armhf test-aarch64 test-armhf abi-check abi-baseline deb docs \
	coverage fuzz fuzz-build fuzz-run format format-check clean

all: build

deps:
	@scripts/install-deps

$(BUILD)/build.ninja: | deps
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELMAR_WERROR=ON

$(ASAN_BUILD)/build.ninja: | deps
	cmake -S . -B $(ASAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVELMAR_SANITIZE=ON -DVELMAR_WERROR=ON

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

build-asan: deps $(ASAN_BUILD)/build.ninja
	cmake --build $(ASAN_BUILD) -j $(JOBS)

test-normal: build
	$(NETNS) ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

test-asan: build-asan
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	$(NETNS) ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

# The whole suite twice: a normal build, then AddressSanitizer+UndefinedBehaviorSanitizer.
test: test-normal test-asan

# The porting contract (tests/port) against the host port and the fake; with
# VELMAR_PORT_LIBRARIES="/abs/libfoo.so ..." against those libraries instead,
# built alone in $(PORT_CHECK_BUILD). Prints one line per point that fails or
# is skipped ("FAIL <point>: <what was expected>"); fails when a point fails.
port-check: deps
ifeq ($(strip $(VELMAR_PORT_LIBRARIES)),)
	$(MAKE) $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS) --target port_contract_host port_contract_fake
	$(NETNS) $(BUILD)/tests/port_contract_host --summary; host=$$?; \
	$(NETNS) $(BUILD)/tests/port_contract_fake --summary && exit $$host
else
	cmake -S . -B $(PORT_CHECK_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	    "-DVELMAR_PORT_LIBRARIES=$(subst $(space),;,$(strip $(VELMAR_PORT_LIBRARIES)))" \
	    -DVELMAR_BUILD_TOOLS=OFF
	cmake --build $(PORT_CHECK_BUILD) -j $(JOBS) --target port_contract_integrator
	$(NETNS) $(PORT_CHECK_BUILD)/tests/port_contract_integrator --summary
endif

demo: build
	$(NETNS) scripts/demo $(BUILD)

bench: deps
	@for arch in $(BENCH_CROSS); do JOBS=$(JOBS) scripts/cross-build $$arch || echo "bench: the $$arch cross build failed; its sizes stay out of the table" >&2; done
	cmake -S . -B $(BENCH_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELMAR_BUILD_BENCH=ON -DVELMAR_BUILD_TESTS=OFF -DVELMAR_WERROR=ON
	cmake --build $(BENCH_BUILD) -j $(JOBS)
	$(NETNS) scripts/bench $(BENCH_BUILD)

# What the speaker runs, cross-built in Release into build-aarch64 / build-armhf
# against a target root of Debian's packages (build-roots/ARCH);
# VELMAR_SYSROOT=DIR takes the target's libraries from a firmware SDK instead.
cross-aarch64 cross-armhf: cross-%:
	JOBS=$(JOBS) scripts/cross-build $*

# The whole suite built for the speaker's architecture (build-test-ARCH) and
# run under qemu-user in the loopback-only namespace.
test-aarch64 test-armhf: test-%:
	JOBS=$(JOBS) scripts/test-target $*

# The whole suite in a gcov build, then the per-directory table of lines and
# branches covered against the targets (scripts/coverage); fails when one
# falls below its target. The per-file report is
# $(COVERAGE_BUILD)/coverage/index.html. gcovr too runs where it cannot replace
# a device node (it replaces whatever file it is told to write).
coverage: deps
	@scripts/install-deps gcovr
	cmake -S . -B $(COVERAGE_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVELMAR_COVERAGE=ON -DVELMAR_WERROR=ON
	cmake --build $(COVERAGE_BUILD) -j $(JOBS)
	find $(COVERAGE_BUILD) -name '*.gcda' -delete
	$(NETNS) ctest --test-dir $(COVERAGE_BUILD) --output-on-failure -j $(JOBS)
	$(NETNS) scripts/coverage $(COVERAGE_BUILD)

# The libFuzzer harnesses (clang, ASan+UBSan), each run for FUZZ_SECONDS from
# its seeds; new inputs go to $(FUZZ_BUILD)/corpus, findings to
# $(FUZZ_BUILD)/artifacts, and a finding fails the run. Not part of `make
# test`; CI runs it with FUZZ_SECONDS=20. llvm brings the symbolizer that puts
# source lines into a finding's stack.
fuzz: fuzz-build
	$(MAKE) fuzz-run

fuzz-build: deps
	@scripts/install-deps clang libclang-rt-dev llvm
	cmake -S . -B $(FUZZ_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DVELMAR_BUILD_FUZZ=ON \
	    -DVELMAR_BUILD_TESTS=OFF -DVELMAR_BUILD_TOOLS=OFF -DVELMAR_WERROR=ON
	cmake --build $(FUZZ_BUILD) -j $(JOBS)

fuzz-run:
	@mkdir -p $(FUZZ_BUILD)/artifacts
	@for h in $(FUZZERS); do \
	    mkdir -p $(FUZZ_BUILD)/corpus/$$h && \
	    $(NETNS) $(FUZZ_BUILD)/tests/fuzz/$$h -max_total_time=$(FUZZ_SECONDS) -timeout=25 \
	        -close_fd_mask=1 -print_final_stats=1 -artifact_prefix=$(FUZZ_BUILD)/artifacts/$$h- \
	        $(FUZZ_BUILD)/corpus/$$h tests/fuzz/corpus/$$h || exit 1; \
	done

# The shipped libraries' binary interface against the baseline in abi/ARCH/:
# fails on an incompatible change under the same SONAME. `make abi-baseline`
# writes the baseline anew after an intended change (see scripts/abi-check).
abi-check: build
	scripts/abi-check $(BUILD)

abi-baseline: build
	scripts/abi-check --update $(BUILD)

# Debian packages for this machine's architecture in build-deb (runtime,
# development, tools), checked with lintian and proven in a clean root.
deb: deps
	JOBS=$(JOBS) scripts/deb

# The API reference of the public headers (Doxygen) in $(DOCS_BUILD)/html;
# fails on any public class, function, member, parameter or enumerator
# without its comment. CI runs it.
docs:
	scripts/docs $(DOCS_BUILD)

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

format-check:
	git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(BENCH_BUILD) $(FUZZ_BUILD) $(COVERAGE_BUILD) $(DOCS_BUILD) \
	    $(PORT_CHECK_BUILD) \
	    build-aarch64 build-armhf build-test-aarch64 build-test-armhf build-roots build-deb
