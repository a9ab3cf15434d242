#include "calib/pages/page_style.h"

#include "calib/charts/chart_style.h"

namespace calib {

std::string PageStyle() {
  return ":root{color-scheme:light dark}"
         "body{margin:0 auto;padding:1rem;max-width:66rem;background:#fff;color:#222;"
         "font:1rem/1.5 'DejaVu Sans','Helvetica Neue',Arial,sans-serif;overflow-wrap:anywhere}"
         "h1{font-size:1.5rem}h2{font-size:1.2rem;border-bottom:1px solid #bbb;margin-top:2.5rem}"
         "h3{font-size:1rem}a{color:#0b5394}"
         "nav ul{padding:0;display:flex;flex-wrap:wrap;gap:0 1.5rem;list-style:none}"
         "table{border-collapse:collapse;font-size:.875rem;overflow-wrap:normal}"
         "caption{text-align:left;font-weight:bold;padding:.4rem 0}"
         "th,td{text-align:left;padding:.15rem .8rem .15rem 0;border-bottom:1px solid #ddd;"
         "vertical-align:top;font-weight:normal}thead th{font-weight:bold}"
         "td{font-variant-numeric:tabular-nums}"
         ".wide,figure{overflow-x:auto;margin:1rem 0;max-width:100%}"
         "figure svg{display:block;max-width:100%;min-width:38rem;height:auto}"
         "figure.turn svg{min-width:0}td svg{display:block}"
         "img{max-width:100%;height:auto;image-rendering:pixelated}"
         "figcaption{font-size:.875rem}summary{cursor:pointer;padding:.3rem 0}"
         // On a narrow screen a record's cells stand below one another.
         "@media (max-width:40rem){.records thead{display:none}"
         ".records,.records caption,.records tbody,.records tr,.records th,.records "
         "td{display:block}"
         ".records tr{padding:.6rem 0;border-bottom:1px solid #999}"
         ".records th,.records td{border:0;padding:.1rem 0}.records th{font-weight:bold}}"
         ".finding{color:#9c2f14;font-weight:bold}.fine{color:#0e6654}"
         ".skip{position:absolute;left:-99rem}.skip:focus{left:1rem;top:1rem;background:#fff}"
         ":focus-visible{outline:3px solid #d9730d;outline-offset:2px}"
         "@media (prefers-color-scheme:dark){body,.skip:focus{background:#14171c;color:#dde2e8}"
         "h2{border-color:#4a5260}a{color:#8cc4ff}th,td{border-color:#333a44}"
         ".finding{color:#ff9d80}.fine{color:#57d3b5}}"
         "@media print{nav,.skip,.hint{display:none}h2{break-after:avoid}"
         "figure,tr{break-inside:avoid}.wide,figure{overflow:visible}"
         "figure svg{min-width:0}}" +
         ChartStyle();
}

}  // namespace calib
