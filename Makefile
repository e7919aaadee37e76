# Front door: `make run` builds and runs the demo, `make test` builds and runs every test.
BUILD_DIR   ?= build
BENCH_DIR   ?= build-bench
JOBS        ?= 2
CMAKE_FLAGS ?=

# Debian packages the build, the tests and the benchmarks need.
DEB_PACKAGES := cmake g++ make pkg-config locales \
  libicu-dev libexpat1-dev \
  libboost-dev libboost-filesystem-dev libboost-thread-dev libboost-date-time-dev libboost-system-dev \
  libgtest-dev libgmock-dev libbenchmark-dev libutfcpp-dev libuchardet-dev unicode-data bzip2 tzdata
# libc locales that the tests and the benchmarks' glibc peers use, as SOURCE/CHARMAP/NAME; a
# fresh Debian machine has only C and POSIX.
LIBC_LOCALES := de_DE/ISO-8859-1/de_DE de_DE/UTF-8/de_DE.UTF-8 de_DE@euro/ISO-8859-15/de_DE@euro \
  en_US/ISO-8859-1/en_US en_US/UTF-8/en_US.UTF-8 fr_FR/ISO-8859-1/fr_FR fr_FR/UTF-8/fr_FR.UTF-8 \
  ja_JP/EUC-JP/ja_JP.eucJP \
  ja_JP/UTF-8/ja_JP.UTF-8 tr_TR/UTF-8/tr_TR.UTF-8 zh_TW/UTF-8/zh_TW.UTF-8
# Expat before this revision crashes on long entity chains.
EXPAT_MIN := 2.5.0-1+deb12u5

.PHONY: all deps configure build test run bench clean

all: build

deps:
	@missing=""; \
	for p in $(DEB_PACKAGES); do \
	  dpkg -s $$p >/dev/null 2>&1 || missing="$$missing $$p"; \
	done; \
	ver=$$(dpkg-query -W -f='$${Version}' libexpat1 2>/dev/null); \
	if [ -z "$$ver" ] || dpkg --compare-versions "$$ver" lt "$(EXPAT_MIN)"; then \
	  missing="$$missing libexpat1 libexpat1-dev"; \
	fi; \
	if [ -n "$$missing" ]; then \
	  echo "deps: installing$$missing"; \
	  apt-get update -qq && \
	  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $$missing; \
	else \
	  echo "deps: all packages present"; \
	fi
	@have=$$(localedef --list-archive 2>/dev/null); \
	for entry in $(LIBC_LOCALES); do \
	  source=$${entry%%/*}; rest=$${entry#*/}; charmap=$${rest%%/*}; name=$${rest#*/}; \
	  base=$${name%%.*}; base=$${base%%@*}; \
	  case $$name in *.*) codeset=$${name#*.}; codeset=$${codeset%%@*}; \
	    codeset=.$$(printf '%s' "$$codeset" | tr -d '-' | tr 'A-Z' 'a-z');; *) codeset=;; esac; \
	  case $$name in *@*) modifier=@$${name#*@};; *) modifier=;; esac; \
	  if ! printf '%s\n' "$$have" | grep -qxF "$$base$$codeset$$modifier"; then \
	    echo "deps: generating the libc locale $$name"; \
	    localedef -i "$$source" -f "$$charmap" "$$name" || exit 1; \
	  fi; \
	done

configure: deps
	cmake -S . -B $(BUILD_DIR) $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD_DIR) -j$(JOBS)

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j$(JOBS)

run: build
	$(BUILD_DIR)/bin/qxi18n demo

bench: deps
	cmake -S . -B $(BENCH_DIR) -DCMAKE_BUILD_TYPE=Release -DQXI18N_BUILD_BENCH=ON -DQXI18N_BUILD_TESTS=OFF -DQXI18N_BUILD_TOOLS=ON
	cmake --build $(BENCH_DIR) -j$(JOBS) --target qxi18n_bench qxi18n_bench_internal qxi18n_bench_startup qxi18n_bench_stream
	$(BENCH_DIR)/bin/qxi18n_bench
	$(BENCH_DIR)/bin/qxi18n_bench_internal
	$(BENCH_DIR)/bin/qxi18n_bench_startup
	$(BENCH_DIR)/bin/qxi18n_bench_stream

clean:
	rm -rf $(BUILD_DIR) $(BENCH_DIR)
